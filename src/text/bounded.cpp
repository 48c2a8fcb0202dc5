// Copying and appending within a bound.
#include "kestu_str.h"

#include <algorithm>
#include <cstring>

size_t kestu_str_strlcpy(char *dst, const char *src, size_t size) {
    const size_t length = std::strlen(src);
    if (size > 0) {
        const size_t copied = std::min(length, size - 1);
        std::memcpy(dst, src, copied);
        dst[copied] = '\0';
    }
    return length;
}

size_t kestu_str_strlcat(char *dst, const char *src, size_t size) {
    const size_t found = strnlen(dst, size);
    return found + kestu_str_strlcpy(dst + found, src, size - found);
}
