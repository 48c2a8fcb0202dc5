#include "base/pool_text.hpp"

#include "base/kept_errno.hpp"

#include <cstring>

namespace kestu {
namespace {

// Room for the length of a text and its terminator.
char *pool_bytes(apr_pool_t *pool, size_t length) {
    const KeptErrno kept;
    return static_cast<char *>(apr_palloc(pool, length + 1));
}

} // namespace

char *pool_copy(apr_pool_t *pool, std::string_view text) {
    char *copy = pool_bytes(pool, text.size());
    if (copy) {
        std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
    }
    return copy;
}

char *pool_draft(apr_pool_t *pool, Draft &draft, std::string_view suffix) {
    const size_t length = draft.length();
    char *text = pool_bytes(pool, length + suffix.size());
    if (text) {
        draft.write(text);
        std::memcpy(text + length, suffix.data(), suffix.size());
        text[length + suffix.size()] = '\0';
    }
    return text;
}

} // namespace kestu
