// The digits of a number as text.
#include "str/number_text.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kestu {
namespace {

constexpr int default_precision = 6;

// Smaller decimal exponents make the shorter notation scientific.
constexpr int min_plain_exponent = -4;

constexpr auto pairs = [] {
    std::array<char, 200> text{};
    for (size_t i = 0; i < 100; ++i) {
        text[2 * i] = static_cast<char>('0' + i / 10);
        text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return text;
}();

const char *digits_of(bool upper_case) {
    return upper_case ? "0123456789ABCDEF" : "0123456789abcdef";
}

// Takes the zeros off the end of a fraction.
void strip_zeros(uint64_t &fraction, int &places) {
    if (fraction == 0)
        places = 0;
    for (; places > 0 && fraction % 10 == 0; --places)
        fraction /= 10;
}

} // namespace

void NumberText::put_pair(uint64_t below_100) {
    begin -= 2;
    std::memcpy(begin, &pairs[2 * below_100], 2);
}

void NumberText::put_decimal(uint64_t value) {
    for (; value >= 100; value /= 100)
        put_pair(value % 100);
    if (value >= 10)
        put_pair(value);
    else
        put_digit(value);
}

void NumberText::put_octal(uint64_t value) {
    do {
        put_digit(value & 7);
    } while (value >>= 3);
}

void NumberText::put_hexadecimal(uint64_t value, bool upper_case) {
    const char *digits = digits_of(upper_case);
    do {
        *--begin = digits[value & 15];
    } while (value >>= 4);
}

// `one_written` is set when the last digit stands already.
void NumberText::put_grouped(uint64_t value, unsigned base, bool upper_case, bool one_written) {
    const char *digits = digits_of(upper_case);
    int written = one_written;
    do {
        if (written > 0 && written % 3 == 0)
            *--begin = ',';
        *--begin = digits[value % base];
        ++written;
    } while (value /= base);
}

void NumberText::put_integer(uint64_t value, char conversion, bool group) {
    const unsigned base = conversion == 'o' ? 8 : (conversion | 0x20) == 'x' ? 16 : 10;
    if (group)
        put_grouped(value, base, conversion == 'X', false);
    else if (base == 10)
        put_decimal(value);
    else if (base == 16)
        put_hexadecimal(value, conversion == 'X');
    else
        put_octal(value);
}

void NumberText::put_fixed(Fixed number, int places, const FloatStyle &style) {
    for (int left = places; left > 1; left -= 2, number.fraction /= 100)
        put_pair(number.fraction % 100);
    if (places % 2 != 0)
        put_digit(number.fraction);
    if (places > 0 || style.alternate)
        *--begin = '.';

    const bool too_long = number.integer >> 64; // by the last of its 20 digits
    auto integer = static_cast<uint64_t>(number.integer);
    if (too_long) {
        const Division tens(number.integer, 10);
        put_digit(tens.rest);
        integer = tens.quotient;
    }
    if (style.group)
        put_grouped(integer, 10, false, too_long);
    else
        put_decimal(integer);
}

void NumberText::put_exponent(int exponent, bool upper_case) {
    const auto magnitude = static_cast<uint64_t>(std::abs(exponent));
    put_pair(magnitude % 100);
    if (magnitude >= 100)
        put_digit(magnitude / 100);
    *--begin = exponent < 0 ? '-' : '+';
    *--begin = upper_case ? 'E' : 'e';
}

void NumberText::put_scientific(Binary value, const FloatStyle &style, int places) {
    const Scientific rounded = round_scientific(value, places);
    put_exponent(rounded.exponent, style.upper_case);
    put_fixed(split(rounded.digits, places), places, style);
}

void NumberText::put_shorter(Binary value, const FloatStyle &style, int places) {
    const Scientific rounded = round_scientific(value, places);
    if (rounded.exponent < min_plain_exponent || rounded.exponent > places)
        put_exponent(rounded.exponent, style.upper_case);
    else
        places -= rounded.exponent;

    Fixed number;
    if (places <= max_places)
        number = split(rounded.digits, places);
    else
        number = *round_fixed(value, places = max_places); // the value is below 1
    if (!style.alternate)
        strip_zeros(number.fraction, places);
    put_fixed(number, places, style);
}

bool NumberText::put_float(double value, const FloatStyle &style) {
    const Binary binary = to_binary(value);
    const int precision = style.precision < 0 ? default_precision : style.precision;
    if (style.notation == Notation::shorter) {
        put_shorter(binary, style, std::clamp(precision - 1, 0, max_places));
        return true;
    }
    const int places = std::min(precision, max_places);
    if (style.notation == Notation::scientific) {
        put_scientific(binary, style, places);
        return true;
    }
    const std::optional<Fixed> number = round_fixed(binary, places);
    if (number)
        put_fixed(*number, places, style);
    return number.has_value();
}

} // namespace kestu
