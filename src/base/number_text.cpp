// The digits of a number as text.
#include "base/number_text.hpp"

#include "base/digits.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kestu {
namespace {

constexpr int default_precision = 6;

// Smaller decimal exponents make the shorter notation scientific.
constexpr int min_plain_exponent = -4;

// Takes the zeros off the end of a fraction.
void strip_zeros(uint64_t &fraction, int &places) {
    if (fraction == 0)
        places = 0;
    for (; places > 0 && fraction % 10 == 0; --places)
        fraction /= 10;
}

} // namespace

void NumberText::put_digits(uint64_t value, size_t count) {
    begin_ -= count;
    write_decimal(begin_, value, count);
}

void NumberText::put_grouped(uint64_t value, unsigned base, bool upper_case, int written) {
    const char *digits = digits_of(upper_case);
    do {
        if (written > 0 && written % 3 == 0)
            *--begin_ = ',';
        *--begin_ = digits[value % base];
        ++written;
    } while (value /= base);
}

void NumberText::put_fixed(Fixed number, int places, const FloatStyle &style) {
    put_digits(number.fraction, static_cast<size_t>(places));
    if (places > 0 || style.alternate)
        *--begin_ = '.';

    const bool too_long = number.integer >> 64; // by the last of its 20 digits
    auto integer = static_cast<uint64_t>(number.integer);
    if (too_long) {
        const Division tens(number.integer, 10);
        put_digits(tens.rest, 1);
        integer = tens.quotient;
    }
    if (style.group)
        put_grouped(integer, 10, false, too_long);
    else
        put_digits(integer, decimal_width(integer));
}

void NumberText::put_exponent(int exponent, bool upper_case) {
    const auto magnitude = static_cast<uint64_t>(std::abs(exponent));
    put_digits(magnitude, magnitude < 100 ? 2 : 3);
    *--begin_ = exponent < 0 ? '-' : '+';
    *--begin_ = upper_case ? 'E' : 'e';
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
