// The tokenizer: the first byte of the input tells how many separators follow, then comes the text,
// whose line ends divide it into the strings of a list. The tokens must be those that a plain
// reader of one character after another finds in all of it.
#include "fuzz/check.hpp"
#include "kestu_strlist.h"

#include <vector>

using namespace kestu::fuzz;

namespace {

std::vector<std::string> tokens_of(const std::vector<std::string> &strings,
                                   const std::string &separators, apr_pool_t *pool) {
    kestu_strlist_t *text = nullptr, *found = nullptr;
    kestu_strlist_create(&text, pool);
    kestu_strlist_create(&found, pool);
    for (const std::string &string : strings)
        kestu_error_clear(kestu_strlist_addlast(text, string.c_str(), pool));
    kestu_error_clear(kestu_strlist_tokenize(text, found, separators.c_str(), pool));
    std::vector<std::string> tokens;
    for (const kestu_dl_t *node = kestu_dl_get_first(found->head); node; node = node->next)
        tokens.emplace_back(static_cast<const char *>(node->data));
    return tokens;
}

std::vector<std::string> read_plainly(const std::string &text, const std::string &separators) {
    std::vector<std::string> tokens;
    std::string token;
    bool inside = false, quoted = false;
    const auto end_token = [&] {
        if (!token.empty())
            tokens.push_back(token);
        token.clear();
        inside = quoted = false;
    };
    for (const char c : text) {
        const bool separates = separators.find(c) != std::string::npos;
        if (quoted ? c == '"' : separates) {
            end_token();
        } else if (!inside && !quoted && c == '"') {
            quoted = true;
        } else {
            inside = !quoted;
            token += c;
        }
    }
    end_token();
    return tokens;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2)
        return 0;
    start_library();
    const size_t count = std::min<size_t>(1 + data[0] % 8, size - 1);
    std::string separators(reinterpret_cast<const char *>(data) + 1, count);
    std::string whole(reinterpret_cast<const char *>(data) + 1 + count, size - 1 - count);
    std::replace(whole.begin(), whole.end(), '\0', ' ');
    std::replace(separators.begin(), separators.end(), '\0', ' ');

    std::vector<std::string> strings(1);
    std::string joined;
    for (const char c : whole) {
        if (c == '\n') {
            strings.emplace_back();
        } else {
            strings.back() += c;
            joined += c;
        }
    }

    apr_pool_t *pool = nullptr;
    apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
    require(tokens_of(strings, separators, pool) == read_plainly(joined, separators));
    apr_pool_destroy(pool);
    return 0;
}
