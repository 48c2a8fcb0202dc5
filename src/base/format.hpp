// The formatting engine, which tells its failures without errno.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace kestu {

struct Formatted {
    size_t length; // of the full output, or of what was produced before a failure
    int failure;   // 0, or what errno says of it: EOVERFLOW or ERANGE
};

// As rpl_vsnprintf, which is a skin over it.
Formatted format_text(char *str, size_t size, const char *format, va_list args);

} // namespace kestu
