// The formatting engine: walks the format and hands each argument to what prints it.
#include "base/format.hpp"

#include "base/digits.hpp"
#include "base/fields.hpp"
#include "base/format_spec.hpp"
#include "base/sink.hpp"
#include "base/utf8.hpp"
#include "kestu_format.h"

#include <cerrno>
#include <climits>
#include <cstring>

namespace kestu {
namespace {

class Formatter {
  public:
    Formatter(char *str, size_t size, const char *whole_format, va_list args)
        : sink(str, size), format(whole_format), arguments(args) {}

    Formatted run();

  private:
    void put_plain_text();
    bool put_next_field();
    bool convert(const Spec &spec);
    void convert_signed(const Spec &spec);
    void convert_unsigned(const Spec &spec);
    void convert_string(const Spec &spec);
    void convert_char(const Spec &spec);
    void put_decimal(bool negative, uint64_t magnitude);
    void store_length(ArgumentSize size);

    Sink sink;
    const char *format;
    Arguments arguments;
    bool overflow = false;
};

Formatted Formatter::run() {
    bool more = true;
    while (more && *format != '\0') {
        if (*format == '%')
            more = put_next_field();
        else
            put_plain_text();
    }
    sink.terminate();
    const int too_long = sink.length() < INT_MAX ? 0 : ERANGE;
    return {sink.length(), overflow ? EOVERFLOW : too_long};
}

// Most texts between conversions are short and not worth the call that long ones need.
void Formatter::put_plain_text() {
    const char *end = format;
    for (int few = 16; *end != '%' && *end != '\0'; ++end) {
        if (--few == 0) {
            end = strchrnul(end, '%');
            break;
        }
    }
    sink.put({format, static_cast<size_t>(end - format)});
    format = end;
}

// Formats what begins at the `%`. False when nothing may follow.
bool Formatter::put_next_field() {
    ++format;
    Spec spec;
    const SpecState state = read_spec(format, arguments, spec);
    if (state == SpecState::cut_off)
        return false;
    overflow = state == SpecState::too_large || !convert(spec);
    return !overflow;
}

// False when a floating value is too large.
bool Formatter::convert(const Spec &spec) {
    switch (spec.conversion) {
    case 'd':
    case 'i':
        convert_signed(spec);
        break;
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        convert_unsigned(spec);
        break;
    case 'a':
    case 'A':
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
        return put_float(sink, spec, arguments.next_double());
    case 'c':
        convert_char(spec);
        break;
    case 's':
        convert_string(spec);
        break;
    case 'p':
        put_pointer(sink, spec, arguments.next_pointer<const void>());
        break;
    case 'n':
        store_length(spec.size);
        break;
    case '%':
        sink.put('%');
        break;
    default: // prints nothing and takes no argument
        break;
    }
    return true;
}

void Formatter::convert_signed(const Spec &spec) {
    const int64_t value = arguments.next_signed(spec.size);
    const auto bits = static_cast<uint64_t>(value);
    if (spec.bare)
        put_decimal(value < 0, value < 0 ? -bits : bits);
    else
        put_signed(sink, spec, value);
}

void Formatter::convert_unsigned(const Spec &spec) {
    const uint64_t value = arguments.next_unsigned(spec.size);
    if (spec.bare && spec.conversion == 'u')
        put_decimal(false, value);
    else
        put_unsigned(sink, spec, value);
}

void Formatter::convert_string(const Spec &spec) {
    const void *text = arguments.next_pointer<const void>();
    if (text && spec.size == ArgumentSize::as_64)
        put_wide_string(sink, spec, static_cast<const wchar_t *>(text));
    else if (text && spec.bare)
        sink.put(static_cast<const char *>(text));
    else
        put_string(sink, spec, static_cast<const char *>(text));
}

// The width is ignored for characters: callers have come to lay out around that.
void Formatter::convert_char(const Spec &spec) {
    const int c = arguments.next_int();
    if (spec.size == ArgumentSize::as_64)
        sink.put(Utf8Char(static_cast<char32_t>(c)).view());
    else
        sink.put(static_cast<char>(c));
}

// The usual integer, which needs no layout.
void Formatter::put_decimal(bool negative, uint64_t magnitude) {
    const size_t width = decimal_width(magnitude);
    sink.put_in_place(negative + width, [=](char *out) {
        *out = '-';
        write_decimal(out + negative, magnitude, width);
    });
}

void Formatter::store_length(ArgumentSize size) {
    const size_t length = sink.length();
    switch (size) {
    case ArgumentSize::as_char:
        *arguments.next_pointer<signed char>() = static_cast<signed char>(length);
        break;
    case ArgumentSize::as_short:
        *arguments.next_pointer<short>() = static_cast<short>(length);
        break;
    case ArgumentSize::as_int:
        *arguments.next_pointer<int>() = static_cast<int>(length);
        break;
    case ArgumentSize::as_64:
        *arguments.next_pointer<int64_t>() = static_cast<int64_t>(length);
        break;
    }
}

} // namespace

Formatted format_text(char *str, size_t size, const char *format, va_list args) {
    return Formatter(str, size, format, args).run();
}

} // namespace kestu

int rpl_vsnprintf(char *str, size_t size, const char *format, va_list args) {
    const kestu::Formatted formatted = kestu::format_text(str, size, format, args);
    if (formatted.failure == 0)
        return static_cast<int>(formatted.length);
    errno = formatted.failure;
    return -1;
}
