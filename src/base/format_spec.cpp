// Reading a format.
#include "base/format_spec.hpp"

#include <climits>
#include <cstdlib>

namespace kestu {
namespace {

bool read_flag(char c, Spec &spec) {
    switch (c) {
    case '-':
        return spec.left = true;
    case '+':
        return spec.plus = true;
    case ' ':
        return spec.space = true;
    case '#':
        return spec.alternate = true;
    case '0':
        return spec.zero = true;
    case '\'':
        return spec.group = true;
    default:
        return false;
    }
}

// Reads decimal digits, none of which means 0. False when their value is too large.
bool read_digits(const char *&format, int &number) {
    int64_t value = 0;
    for (; *format >= '0' && *format <= '9'; ++format) {
        value = value * 10 + (*format - '0');
        if (value > INT_MAX)
            return false;
    }
    number = static_cast<int>(value);
    return true;
}

bool read_width(const char *&format, Arguments &arguments, Spec &spec) {
    if (*format != '*')
        return read_digits(format, spec.width);
    ++format;
    const int width = arguments.next_int();
    if (width == INT_MIN)
        return false;
    spec.left |= width < 0;
    spec.width = std::abs(width);
    return true;
}

bool read_precision(const char *&format, Arguments &arguments, Spec &spec) {
    if (*format != '.')
        return true;
    if (*++format != '*')
        return read_digits(format, spec.precision);
    ++format;
    spec.precision = arguments.next_int();
    return true;
}

} // namespace

bool read_layout(const char *&format, Arguments &arguments, Spec &spec) {
    while (read_flag(*format, spec))
        ++format;
    return read_width(format, arguments, spec) && read_precision(format, arguments, spec);
}

} // namespace kestu
