#include "shell/words.hpp"

#include "kestu_lib.h"

#include <new>
#include <utility>

namespace program {
namespace {

bool is_inside(int state) {
    return state == KESTU_PRSD_IN_PARAMETER || state == KESTU_PRSD_QUOTED;
}

} // namespace

Words::Words() {
    if (apr_pool_create_ex(&pool_, kestu_pool, nullptr, nullptr) != APR_SUCCESS)
        throw std::bad_alloc();
}

kestu_error_t *Words::add(const std::string &line) {
    for (const char character : line)
        if (kestu_error_t *err = add(character))
            return err;
    return add('\n');
}

std::vector<std::string> Words::take() {
    parser_.state = KESTU_PRSD_BETWEEN;
    word_.clear();
    return std::exchange(words_, {});
}

kestu_error_t *Words::add(char character) {
    const char text[] = {character, '\0'};
    const int before = parser_.state;
    apr_pool_clear(pool_);
    kestu_prsd_clear_p(&parser_);
    parser_.state = before;
    if (kestu_error_t *err = kestu_prsd_parse_p(&parser_, text, " \t\n", pool_))
        return err;
    if (parser_.n > 0)
        word_ += character;
    if (is_inside(before) && !is_inside(parser_.state))
        words_.push_back(std::exchange(word_, {}));
    return nullptr;
}

} // namespace program
