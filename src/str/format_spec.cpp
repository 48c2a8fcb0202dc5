// Reading a format.
#include "str/format_spec.hpp"

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

ArgumentSize read_size(const char *&format) {
    switch (*format) {
    case 'h':
        ++format;
        if (*format != 'h')
            return ArgumentSize::as_short;
        ++format;
        return ArgumentSize::as_char;
    case 'l':
        format += format[1] == 'l' ? 2 : 1;
        return ArgumentSize::as_64;
    case 'j':
    case 't':
    case 'z':
        ++format;
        return ArgumentSize::as_64;
    case 'L':
        ++format;
        return ArgumentSize::as_int;
    default:
        return ArgumentSize::as_int;
    }
}

} // namespace

int64_t Arguments::next_signed(ArgumentSize size) {
    if (size == ArgumentSize::as_64)
        return va_arg(list, int64_t);
    const int value = va_arg(list, int);
    switch (size) {
    case ArgumentSize::as_char:
        return static_cast<signed char>(value);
    case ArgumentSize::as_short:
        return static_cast<short>(value);
    default:
        return value;
    }
}

uint64_t Arguments::next_unsigned(ArgumentSize size) {
    if (size == ArgumentSize::as_64)
        return va_arg(list, uint64_t);
    const unsigned value = va_arg(list, unsigned);
    switch (size) {
    case ArgumentSize::as_char:
        return static_cast<unsigned char>(value);
    case ArgumentSize::as_short:
        return static_cast<unsigned short>(value);
    default:
        return value;
    }
}

SpecState read_spec(const char *&format, Arguments &arguments, Spec &spec) {
    while (read_flag(*format, spec))
        ++format;
    if (!read_width(format, arguments, spec) || !read_precision(format, arguments, spec))
        return SpecState::too_large;
    spec.size = read_size(format);
    spec.conversion = *format;
    if (spec.conversion == '\0')
        return SpecState::cut_off;
    ++format;
    return SpecState::whole;
}

} // namespace kestu
