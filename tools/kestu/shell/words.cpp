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
    if (apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr) != APR_SUCCESS)
        throw std::bad_alloc();
}

kestu_error_t *Words::add(const std::string &line) {
    for (const char character : line)
        if (kestu_error_t *err = add(character))
            return err;
    return add('\n');
}

std::vector<std::string> Words::take() {
    parser.state = KESTU_PRSD_BETWEEN;
    word.clear();
    return std::exchange(words, {});
}

kestu_error_t *Words::add(char character) {
    const char text[] = {character, '\0'};
    const int before = parser.state;
    apr_pool_clear(pool);
    kestu_prsd_clear_p(&parser);
    parser.state = before;
    if (kestu_error_t *err = kestu_prsd_parse_p(&parser, text, " \t\n", pool))
        return err;
    if (parser.n > 0)
        word += character;
    if (is_inside(before) && !is_inside(parser.state))
        words.push_back(std::exchange(word, {}));
    return nullptr;
}

} // namespace program
