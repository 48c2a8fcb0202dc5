// Texts in pools: copies and formatted text.
#include "base/pool_text.hpp"

#include "base/draft.hpp"

#include <cerrno>
#include <cstring>

namespace kestu {
namespace {

char *pool_bytes(apr_pool_t *pool, size_t size) {
    auto *bytes = static_cast<char *>(apr_palloc(pool, size));
    if (!bytes)
        errno = ENOMEM;
    return bytes;
}

} // namespace

char *pool_copy(apr_pool_t *pool, std::string_view text) {
    char *copy = pool_bytes(pool, text.size() + 1);
    if (copy) {
        std::memcpy(copy, text.data(), text.size());
        copy[text.size()] = '\0';
    }
    return copy;
}

char *pool_vformat(apr_pool_t *pool, const char *format, va_list args, std::string_view suffix) {
    Draft draft(format, args);
    if (draft.length() < 0)
        return nullptr;
    const size_t length = static_cast<size_t>(draft.length());
    char *text = pool_bytes(pool, length + suffix.size() + 1);
    if (text) {
        draft.write(text);
        std::memcpy(text + length, suffix.data(), suffix.size());
        text[length + suffix.size()] = '\0';
    }
    return text;
}

} // namespace kestu
