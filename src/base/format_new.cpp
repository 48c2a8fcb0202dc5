// Formatting with a plain argument list, and into new strings.
#include "kestu_format.h"

#include "base/draft.hpp"

#include <cerrno>
#include <cstdlib>

using namespace kestu;

int rpl_snprintf(char *str, size_t size, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vsnprintf(str, size, format, args);
    va_end(args);
    return length;
}

int rpl_vasprintf(char **ret, const char *format, va_list args) {
    Draft draft(format, args);
    if (draft.failure() != 0) {
        errno = draft.failure();
        return -1;
    }
    *ret = static_cast<char *>(std::malloc(draft.length() + 1));
    if (!*ret)
        return -1;
    draft.write(*ret);
    return static_cast<int>(draft.length());
}

int rpl_asprintf(char **ret, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vasprintf(ret, format, args);
    va_end(args);
    return length;
}
