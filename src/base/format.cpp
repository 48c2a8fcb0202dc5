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
        : sink_(str, size), format_(whole_format), arguments_(args) {}

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

    Sink sink_;
    const char *format_;
    Arguments arguments_;
    bool overflow_ = false;
};

Formatted Formatter::run() {
    bool more = true;
    while (more && *format_ != '\0') {
        if (*format_ == '%')
            more = put_next_field();
        else
            put_plain_text();
    }
    sink_.terminate();
    const int too_long = sink_.length() < INT_MAX ? 0 : ERANGE;
    return {sink_.length(), overflow_ ? EOVERFLOW : too_long};
}

// Most texts between conversions are short and not worth the call that long ones need.
void Formatter::put_plain_text() {
    const char *end = format_;
    for (int few = 16; *end != '%' && *end != '\0'; ++end) {
        if (--few == 0) {
            end = strchrnul(end, '%');
            break;
        }
    }
    sink_.put({format_, static_cast<size_t>(end - format_)});
    format_ = end;
}

// Formats what begins at the `%`. False when nothing may follow.
bool Formatter::put_next_field() {
    ++format_;
    Spec spec;
    const SpecState state = read_spec(format_, arguments_, spec);
    if (state == SpecState::cut_off)
        return false;
    overflow_ = state == SpecState::too_large || !convert(spec);
    return !overflow_;
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
        return put_float(sink_, spec, arguments_.next_double());
    case 'c':
        convert_char(spec);
        break;
    case 's':
        convert_string(spec);
        break;
    case 'p':
        put_pointer(sink_, spec, arguments_.next_pointer<const void>());
        break;
    case 'n':
        store_length(spec.size);
        break;
    case '%':
        sink_.put('%');
        break;
    default: // prints nothing and takes no argument
        break;
    }
    return true;
}

void Formatter::convert_signed(const Spec &spec) {
    const int64_t value = arguments_.next_signed(spec.size);
    const auto bits = static_cast<uint64_t>(value);
    if (spec.bare)
        put_decimal(value < 0, value < 0 ? -bits : bits);
    else
        put_signed(sink_, spec, value);
}

void Formatter::convert_unsigned(const Spec &spec) {
    const uint64_t value = arguments_.next_unsigned(spec.size);
    if (spec.bare && spec.conversion == 'u')
        put_decimal(false, value);
    else
        put_unsigned(sink_, spec, value);
}

void Formatter::convert_string(const Spec &spec) {
    const void *text = arguments_.next_pointer<const void>();
    if (text && spec.size == ArgumentSize::as_64)
        put_wide_string(sink_, spec, static_cast<const wchar_t *>(text));
    else if (text && spec.bare)
        sink_.put(static_cast<const char *>(text));
    else
        put_string(sink_, spec, static_cast<const char *>(text));
}

// Kept: the width is ignored for characters. Relied on by: callers that lay out around it.
void Formatter::convert_char(const Spec &spec) {
    const int c = arguments_.next_int();
    if (spec.size == ArgumentSize::as_64)
        sink_.put(Utf8Char(static_cast<char32_t>(c)).view());
    else
        sink_.put(static_cast<char>(c));
}

// The usual integer, which needs no layout.
void Formatter::put_decimal(bool negative, uint64_t magnitude) {
    const size_t width = decimal_width(magnitude);
    sink_.put_in_place(negative + width, [=](char *out) {
        *out = '-';
        write_decimal(out + negative, magnitude, width);
    });
}

void Formatter::store_length(ArgumentSize size) {
    const size_t length = sink_.length();
    switch (size) {
    case ArgumentSize::as_char:
        *arguments_.next_pointer<signed char>() = static_cast<signed char>(length);
        break;
    case ArgumentSize::as_short:
        *arguments_.next_pointer<short>() = static_cast<short>(length);
        break;
    case ArgumentSize::as_int:
        *arguments_.next_pointer<int>() = static_cast<int>(length);
        break;
    case ArgumentSize::as_64:
        *arguments_.next_pointer<int64_t>() = static_cast<int64_t>(length);
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
