// Printing single arguments.
#include "base/fields.hpp"

#include "base/digits.hpp"
#include "base/number_text.hpp"
#include "base/utf8.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kestu {
namespace {

using namespace std::string_view_literals;

// What stands in a field beside its padding: `prefix`, then `zeros` characters of zeros, then
// `size` characters that the caller puts.
struct Field {
    std::string_view prefix;
    size_t zeros;
    size_t size;
};

enum class Padding { spaces, zeros };

// Every fourth character from the end of a grouped number is a separator.
void put_zeros(Sink &sink, const Field &field, bool group) {
    if (!group)
        return sink.fill('0', field.zeros);
    size_t left = field.zeros + field.size;
    for (; left > field.size && !sink.full(); --left)
        sink.put(left % 4 == 0 ? ',' : '0');
    sink.fill('0', left - field.size);
}

template <typename Put>
void put_field(Sink &sink, const Spec &spec, const Field &field, Padding padding, Put put) {
    const size_t size = field.prefix.size() + field.zeros + field.size;
    const size_t missing = std::max(static_cast<size_t>(spec.width), size) - size;
    const bool with_zeros = spec.zero && padding == Padding::zeros;
    if (missing > 0 && !spec.left && !with_zeros)
        sink.fill(' ', missing);
    for (const char c : field.prefix)
        sink.put(c);
    if (missing > 0 && !spec.left && with_zeros)
        sink.fill('0', missing);
    if (field.zeros > 0)
        put_zeros(sink, field, spec.group);
    put();
    if (missing > 0 && spec.left)
        sink.fill(' ', missing);
}

void put_text(Sink &sink, const Spec &spec, std::string_view prefix, std::string_view text) {
    put_field(sink, spec, {prefix, 0, text.size()}, Padding::spaces, [&] { sink.put(text); });
}

std::string_view sign_of(bool negative, const Spec &spec) {
    return negative ? "-"sv : spec.plus ? "+"sv : spec.space ? " "sv : ""sv;
}

// The number of "," in a text of that many digits.
size_t separators(size_t digits) {
    return digits > 0 ? (digits - 1) / 3 : 0;
}

[[gnu::noinline]] void put_grouped(Sink &sink, const Spec &spec, std::string_view prefix,
                                   const Integer &number, size_t digits, Padding padding) {
    NumberText text;
    if (digits > 0)
        text.put_grouped(number.value, number.base(), number.upper_case());
    const size_t written = text.view().size();
    const size_t zeros = digits + separators(digits) - written;
    put_field(sink, spec, {prefix, zeros, written}, padding, [&] { sink.put(text.view()); });
}

void put_integer(Sink &sink, const Spec &spec, std::string_view prefix, const Integer &number) {
    const size_t digits = number.value == 0 && spec.precision == 0 ? 0 : number.width();
    const size_t precision = spec.precision < 0 ? 0 : static_cast<size_t>(spec.precision);
    size_t wanted = std::max(digits, precision);
    const bool begins_with_zero = wanted > digits || (number.value == 0 && digits > 0);
    if (spec.alternate && number.base() == 8 && !begins_with_zero)
        ++wanted;
    const Padding padding = spec.precision < 0 ? Padding::zeros : Padding::spaces;
    if (spec.group)
        return put_grouped(sink, spec, prefix, number, wanted, padding);
    put_field(sink, spec, {prefix, wanted - digits, digits}, padding,
              [&] { sink.put_in_place(digits, [&](char *out) { number.write(out, digits); }); });
}

Notation notation_of(char conversion) {
    switch (conversion) {
    case 'e':
    case 'E':
        return Notation::scientific;
    case 'g':
    case 'G':
        return Notation::shorter;
    default:
        return Notation::fixed;
    }
}

} // namespace

void put_signed(Sink &sink, const Spec &spec, int64_t value) {
    const auto bits = static_cast<uint64_t>(value);
    put_integer(sink, spec, sign_of(value < 0, spec), {value < 0 ? -bits : bits, spec.conversion});
}

void put_unsigned(Sink &sink, const Spec &spec, uint64_t value) {
    const Integer number{value, spec.conversion};
    const bool prefixed = spec.alternate && number.hexadecimal() && value != 0;
    put_integer(sink, spec, !prefixed ? ""sv : number.upper_case() ? "0X"sv : "0x"sv, number);
}

void put_pointer(Sink &sink, const Spec &spec, const void *pointer) {
    if (pointer)
        put_integer(sink, spec, "0x", {reinterpret_cast<uintptr_t>(pointer), 'x'});
    else
        put_text(sink, spec, {}, "(nil)");
}

bool put_float(Sink &sink, const Spec &spec, double value) {
    const bool upper_case = spec.conversion < 'a';
    const std::string_view sign = sign_of(std::signbit(value), spec);
    if (std::isinf(value)) {
        put_text(sink, spec, sign, upper_case ? "INF" : "inf");
        return true;
    }
    if (std::isnan(value)) {
        put_text(sink, spec, sign, upper_case ? "NAN" : "nan");
        return true;
    }
    NumberText text;
    const Notation notation = notation_of(spec.conversion);
    if (!text.put_float(value, {notation, spec.precision, spec.alternate, spec.group, upper_case}))
        return false;
    put_field(sink, spec, {sign, 0, text.view().size()}, Padding::zeros,
              [&] { sink.put(text.view()); });
    return true;
}

void put_string(Sink &sink, const Spec &spec, const char *text) {
    if (!text)
        text = "(null)";
    const size_t size =
        spec.precision < 0 ? std::strlen(text) : strnlen(text, static_cast<size_t>(spec.precision));
    put_text(sink, spec, {}, {text, size});
}

void put_wide_string(Sink &sink, const Spec &spec, const wchar_t *text) {
    const size_t most = spec.precision < 0 ? SIZE_MAX : static_cast<size_t>(spec.precision);
    size_t size = 0;
    const wchar_t *end = text;
    for (; size < most && *end; ++end) {
        const size_t more = Utf8Char(static_cast<char32_t>(*end)).view().size();
        if (more > most - size)
            break;
        size += more;
    }
    put_field(sink, spec, {{}, 0, size}, Padding::spaces, [&] {
        for (const wchar_t *c = text; c != end; ++c)
            sink.put(Utf8Char(static_cast<char32_t>(*c)).view());
    });
}

} // namespace kestu
