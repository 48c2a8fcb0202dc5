// The formatting engine: walks the format, fetches the arguments and lays out the fields.
#include "kestu_format.h"

#include "str/format_spec.hpp"
#include "str/number_text.hpp"
#include "str/sink.hpp"
#include "str/utf8.hpp"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>

using namespace kestu;
using namespace std::string_view_literals;

namespace {

class Formatter {
  public:
    Formatter(char *str, size_t size, const char *whole_format, va_list args)
        : sink(str, size), format(whole_format), arguments(args) {}

    int run();

  private:
    void put_plain_text();
    bool put_next_field();
    bool convert(Spec &spec);
    void put_signed(Spec &spec, int64_t value);
    void put_unsigned(Spec &spec, uint64_t value);
    void put_pointer(Spec &spec, const void *pointer);
    void put_integer(Spec &spec, std::string_view prefix, uint64_t value);
    bool put_float(Spec &spec, double value, Notation notation);
    void put_char(const Spec &spec);
    void put_string(Spec &spec);
    void put_wide_string(const Spec &spec, const wchar_t *text);
    void put_text(Spec &spec, std::string_view prefix, std::string_view text);
    void put_field(const Spec &spec, std::string_view prefix, size_t leading,
                   std::string_view text);
    void put_grouped_zeros(size_t leading, size_t behind);
    void store_length(ArgumentSize size);

    Sink sink;
    const char *format;
    Arguments arguments;
    bool overflow = false;
};

std::string_view sign_of(bool negative, const Spec &spec) {
    return negative ? "-"sv : spec.plus ? "+"sv : spec.space ? " "sv : ""sv;
}

// The number of "," in a text of that many digits.
size_t separators(size_t digits) {
    return digits > 0 ? (digits - 1) / 3 : 0;
}

int Formatter::run() {
    do
        put_plain_text();
    while (*format != '\0' && put_next_field());
    sink.terminate();
    if (!overflow && sink.length() < INT_MAX)
        return static_cast<int>(sink.length());
    errno = overflow ? EOVERFLOW : ERANGE;
    return -1;
}

void Formatter::put_plain_text() {
    const char *end = strchrnul(format, '%');
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
bool Formatter::convert(Spec &spec) {
    switch (spec.conversion) {
    case 'd':
    case 'i':
        put_signed(spec, arguments.next_signed(spec.size));
        break;
    case 'o':
    case 'u':
    case 'x':
    case 'X':
        put_unsigned(spec, arguments.next_unsigned(spec.size));
        break;
    case 'f':
    case 'F':
    case 'a':
    case 'A':
        return put_float(spec, arguments.next_double(), Notation::fixed);
    case 'e':
    case 'E':
        return put_float(spec, arguments.next_double(), Notation::scientific);
    case 'g':
    case 'G':
        return put_float(spec, arguments.next_double(), Notation::shorter);
    case 'c':
        put_char(spec);
        break;
    case 's':
        put_string(spec);
        break;
    case 'p':
        put_pointer(spec, arguments.next_pointer<const void>());
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

void Formatter::put_signed(Spec &spec, int64_t value) {
    const auto magnitude = static_cast<uint64_t>(value);
    put_integer(spec, sign_of(value < 0, spec), value < 0 ? -magnitude : magnitude);
}

void Formatter::put_unsigned(Spec &spec, uint64_t value) {
    const bool prefixed = spec.alternate && value != 0;
    put_integer(spec,
                prefixed && spec.conversion == 'x'   ? "0x"sv
                : prefixed && spec.conversion == 'X' ? "0X"sv
                                                     : ""sv,
                value);
}

void Formatter::put_pointer(Spec &spec, const void *pointer) {
    if (!pointer)
        return put_text(spec, {}, "(nil)");
    spec.alternate = true;
    spec.conversion = 'x';
    put_unsigned(spec, reinterpret_cast<uintptr_t>(pointer));
}

void Formatter::put_integer(Spec &spec, std::string_view prefix, uint64_t value) {
    NumberText text;
    if (value != 0 || spec.precision != 0)
        text.put_integer(value, spec.conversion, spec.group);
    const std::string_view view = text.view();
    const size_t digits = spec.group ? view.size() - view.size() / 4 : view.size();
    size_t wanted = digits;
    if (spec.precision >= 0) {
        wanted = std::max(digits, static_cast<size_t>(spec.precision));
        spec.zero = false;
    }
    if (spec.conversion == 'o' && spec.alternate && wanted == digits && !view.starts_with('0'))
        ++wanted;
    const size_t size = spec.group ? wanted + separators(wanted) : wanted;
    put_field(spec, prefix, size - view.size(), view);
}

bool Formatter::put_float(Spec &spec, double value, Notation notation) {
    const bool upper_case = spec.conversion < 'a';
    const std::string_view sign = sign_of(std::signbit(value), spec);
    if (!std::isfinite(value)) {
        put_text(spec, sign,
                 std::isinf(value) ? upper_case ? "INF" : "inf"
                 : upper_case      ? "NAN"
                                   : "nan");
        return true;
    }
    NumberText text;
    if (!text.put_float(value, {notation, spec.precision, spec.alternate, spec.group, upper_case}))
        return false;
    put_field(spec, sign, 0, text.view());
    return true;
}

// The width is ignored for characters: messages have been laid out around that.
void Formatter::put_char(const Spec &spec) {
    const int c = arguments.next_int();
    if (spec.size == ArgumentSize::as_64)
        sink.put(Utf8Char(static_cast<char32_t>(c)).view());
    else
        sink.put(static_cast<char>(c));
}

void Formatter::put_string(Spec &spec) {
    const void *string = arguments.next_pointer<const void>();
    if (string && spec.size == ArgumentSize::as_64)
        return put_wide_string(spec, static_cast<const wchar_t *>(string));
    const auto *text = string ? static_cast<const char *>(string) : "(null)";
    const size_t size =
        spec.precision < 0 ? std::strlen(text) : strnlen(text, static_cast<size_t>(spec.precision));
    put_text(spec, {}, {text, size});
}

// Wide strings come out in UTF-8. A precision counts bytes and never splits a character; behind the
// last one that it admits nothing is read.
void Formatter::put_wide_string(const Spec &spec, const wchar_t *text) {
    const size_t most = spec.precision < 0 ? SIZE_MAX : static_cast<size_t>(spec.precision);
    size_t size = 0;
    const wchar_t *end = text;
    for (; size < most && *end; ++end) {
        const size_t more = Utf8Char(static_cast<char32_t>(*end)).view().size();
        if (more > most - size)
            break;
        size += more;
    }
    const size_t padding = std::max(static_cast<size_t>(spec.width), size) - size;
    sink.fill(' ', spec.left ? 0 : padding);
    for (; text != end; ++text)
        sink.put(Utf8Char(static_cast<char32_t>(*text)).view());
    sink.fill(' ', spec.left ? padding : 0);
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

// Texts are padded with spaces only.
void Formatter::put_text(Spec &spec, std::string_view prefix, std::string_view text) {
    spec.zero = false;
    put_field(spec, prefix, 0, text);
}

// Lays out a field: `leading` characters of zeros, grouped where asked for, stand before `text`.
void Formatter::put_field(const Spec &spec, std::string_view prefix, size_t leading,
                          std::string_view text) {
    const size_t size = prefix.size() + leading + text.size();
    const size_t padding = std::max(static_cast<size_t>(spec.width), size) - size;
    if (!spec.left && !spec.zero)
        sink.fill(' ', padding);
    sink.put(prefix);
    if (!spec.left && spec.zero)
        sink.fill('0', padding);
    if (spec.group)
        put_grouped_zeros(leading, text.size());
    else
        sink.fill('0', leading);
    sink.put(text);
    if (spec.left)
        sink.fill(' ', padding);
}

// Every fourth character from the end of a grouped number is a separator.
void Formatter::put_grouped_zeros(size_t leading, size_t behind) {
    for (size_t left = leading + behind; left > behind; --left)
        sink.put(left % 4 == 0 ? ',' : '0');
}

} // namespace

int rpl_vsnprintf(char *str, size_t size, const char *format, va_list args) {
    return Formatter(str, size, format, args).run();
}
