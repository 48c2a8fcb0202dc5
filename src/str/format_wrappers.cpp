// The skins over the formatting engine.
#include "kestu_format.h"
#include "kestu_str.h"

#include <cstdlib>

int rpl_snprintf(char *str, size_t size, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vsnprintf(str, size, format, args);
    va_end(args);
    return length;
}

int rpl_vasprintf(char **ret, const char *format, va_list args) {
    va_list measured;
    va_copy(measured, args);
    const int length = rpl_vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0)
        return -1;
    const size_t size = static_cast<size_t>(length) + 1;
    *ret = static_cast<char *>(std::malloc(size));
    return *ret ? rpl_vsnprintf(*ret, size, format, args) : -1;
}

int rpl_asprintf(char **ret, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vasprintf(ret, format, args);
    va_end(args);
    return length;
}

int kestu_str_snprintf(char *buf, size_t size, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vsnprintf(buf, size, format, args);
    va_end(args);
    return length;
}

int kestu_str_asprintf(char **ret, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vasprintf(ret, format, args);
    va_end(args);
    return length;
}

int kestu_str_vasprintf(char **ret, const char *format, va_list args) {
    return rpl_vasprintf(ret, format, args);
}
