// Texts in pools: copies and formatted text.
#include "str/pool_text.hpp"

#include "kestu_format.h"
#include "kestu_str.h"

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

// Most texts fit the buffer and are formatted once; a longer one is formatted again in place.
char *pool_vformat(apr_pool_t *pool, const char *format, va_list args, std::string_view suffix) {
    char buffer[512];
    va_list again;
    va_copy(again, args);
    const int formatted = rpl_vsnprintf(buffer, sizeof buffer, format, args);
    char *text = nullptr;
    if (formatted >= 0) {
        const size_t length = static_cast<size_t>(formatted);
        text = pool_bytes(pool, length + suffix.size() + 1);
        if (text) {
            if (length < sizeof buffer)
                std::memcpy(text, buffer, length);
            else
                rpl_vsnprintf(text, length + 1, format, again);
            std::memcpy(text + length, suffix.data(), suffix.size());
            text[length + suffix.size()] = '\0';
        }
    }
    va_end(again);
    return text;
}

} // namespace kestu

char *kestu_str_psprintf(apr_pool_t *pool, const char *format, ...) {
    va_list args;
    va_start(args, format);
    char *text = kestu::pool_vformat(pool, format, args);
    va_end(args);
    return text;
}

char *kestu_str_pvsprintf(apr_pool_t *pool, const char *format, va_list args) {
    return kestu::pool_vformat(pool, format, args);
}
