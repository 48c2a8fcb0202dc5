// The formatting engine.
#include "kestu_format.h"

#include <cstdio>

int rpl_vsnprintf(char *str, size_t size, const char *format, va_list args) {
    return std::vsnprintf(str, size, format, args);
}
