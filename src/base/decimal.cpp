// Exact decimal digits of doubles.
//
// Fixed notation needs 128-bit integers and no more. For scientific notation value * 10^power is
// computed to 128 bits with a power that was cut after 128 bits. The product is then too small by
// less than two units in its last place, so the digit below it and the direction of rounding are
// known unless the remainder lies within these two units of one half. Only then, which means for
// ties and hardly ever otherwise, the comparison with one half is made with all bits.
#include "base/decimal.hpp"

#include "base/digits.hpp"

#include <algorithm>

namespace kestu {
namespace {

constexpr int step = 27; // 5^27 is the largest power of five below 2^63

constexpr auto small_powers_of_five = [] {
    std::array<uint64_t, step + 1> powers{1};
    for (size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 5;
    return powers;
}();

// About `significand` * 2^`exponent`, cut after 128 significant bits.
struct Approximation {
    Uint128 significand;
    int exponent;
};

// 5^(27 * i) for i from -12 to 12.
constexpr int large_powers_each_side = 12;
constexpr auto large_powers_of_five = [] {
    std::array<Approximation, 2 * large_powers_each_side + 1> powers{};
    const auto cut = [](const Natural &n, int exponent) {
        return Approximation{n.leading_bits(), n.bit_width() - 128 + exponent};
    };
    Natural power(1);
    for (size_t i = large_powers_each_side; i < powers.size(); ++i) {
        powers[i] = cut(power, 0);
        power *= small_powers_of_five[step];
    }
    Natural inverse(1);
    inverse <<= Natural::bits - 1;
    for (size_t i = large_powers_each_side; i-- > 0;) {
        inverse /= small_powers_of_five[step];
        powers[i] = cut(inverse, 1 - Natural::bits);
    }
    return powers;
}();

// The upper half of a product, and whether the lower half is zero.
struct UpperHalf {
    Uint128 value;
    bool exact;
};

UpperHalf multiply(Uint128 a, Uint128 b) {
    const auto low = [](Uint128 n) { return static_cast<uint64_t>(n); };
    const auto high = [](Uint128 n) { return static_cast<uint64_t>(n >> 64); };
    const Uint128 lowest = Uint128{low(a)} * low(b);
    const Uint128 left = Uint128{high(a)} * low(b);
    const Uint128 right = Uint128{low(a)} * high(b);
    const Uint128 middle = Uint128{low(left)} + low(right) + high(lowest);
    return {Uint128{high(a)} * high(b) + high(left) + high(right) + high(middle),
            low(lowest) == 0 && low(middle) == 0};
}

// value * 10^power as `units` * 2^-`shift`, cut to whole units. When it is not `exact`, the true
// value lies above, by less than two units.
struct Scaled {
    Uint128 units;
    int shift;
    bool exact;
};

Scaled scale(Binary value, int power) {
    const int large = (power + step * large_powers_each_side) / step;
    const int small = power + step * large_powers_each_side - step * large;
    const Approximation &factor = large_powers_of_five[static_cast<size_t>(large)];
    const Uint128 product =
        Uint128{value.mantissa} * small_powers_of_five[static_cast<size_t>(small)];
    const auto high = static_cast<uint64_t>(product >> 64);
    const auto low = static_cast<uint64_t>(product);
    const int room = high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(low | 1);
    const UpperHalf scaled = multiply(product << room, factor.significand);
    const bool factor_exact = large >= large_powers_each_side && factor.exponent <= 0;
    return {scaled.value, room - 128 - factor.exponent - value.exponent - power,
            scaled.exact && factor_exact};
}

// The decimal exponent of a value that is not zero, or one less: takes log2(1 + f) for f, which is
// never more.
int guess_exponent(Binary value) {
    constexpr int64_t log10_of_2 = 0x4D104D427DE7FBCC; // scaled by 2^64
    const int room = std::countl_zero(value.mantissa);
    const uint64_t fraction = value.mantissa << room << 1 >> 12; // scaled by 2^52
    const int64_t log2 =
        (int64_t{value.exponent + 63 - room} << 52) + static_cast<int64_t>(fraction);
    return static_cast<int>(static_cast<__int128>(log2) * log10_of_2 >> (52 + 64));
}

bool rounds_up(Binary value, int power, const Scaled &scaled, Uint128 floor) {
    const Uint128 half = Uint128{1} << (scaled.shift - 1);
    const Uint128 rest = scaled.units - (scaled.shift < 128 ? floor << scaled.shift : 0);
    if (rest > half || (rest == half && !scaled.exact))
        return true;
    if (rest + 2 <= half || (rest < half && scaled.exact))
        return false;
    const auto order = scaled.exact ? std::strong_ordering::equal
                                    : compare_with_halves(value, power, 2 * floor + 1);
    return order > 0 || (order == 0 && (floor & 1));
}

// The integer part of value * 10^power, whose lowest bit is set as well when there is more.
uint64_t scale_to_odd(Binary value, int power) {
    const Scaled scaled = scale(value, power);
    const auto floor = static_cast<uint64_t>(scaled.units >> scaled.shift);
    const Uint128 rest = scaled.units - (Uint128{floor} << scaled.shift);
    if (scaled.exact)
        return floor | (rest != 0);
    if (rest + 2 >= Uint128{1} << scaled.shift) {
        const auto order = compare_with_halves(value, power, 2 * (Uint128{floor} + 1));
        if (order >= 0)
            return (floor + 1) | (order > 0);
    }
    return floor | 1;
}

} // namespace

Binary to_binary(double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    const uint64_t fraction = bits & ((uint64_t{1} << 52) - 1);
    const int biased = static_cast<int>(bits >> 52 & 0x7FF);
    if (biased == 0)
        return {fraction, -1074};
    return {fraction | uint64_t{1} << 52, biased - 1075};
}

std::optional<Fixed> round_fixed(Binary value, int places) {
    if (value.exponent > 11)
        return std::nullopt;
    if (value.exponent >= 0)
        return Fixed{value.mantissa << value.exponent, 0};
    // The scaled fraction has at most 53 + 64 bits: with a shift above 118 it is less than one
    // half.
    const int shift = -value.exponent;
    const uint64_t integer = shift < 64 ? value.mantissa >> shift : 0;
    if (shift > 118)
        return Fixed{integer, 0};
    const uint64_t one = powers_of_ten[static_cast<size_t>(places)];
    const uint64_t below_point = shift < 64 ? value.mantissa - (integer << shift) : value.mantissa;
    const Uint128 scaled = Uint128{below_point} * one;
    const Uint128 rest = scaled & ((Uint128{1} << shift) - 1);
    const Uint128 half = Uint128{1} << (shift - 1);
    auto fraction = static_cast<uint64_t>(scaled >> shift);
    const bool odd = (places > 0 ? fraction : integer) & 1;
    fraction += rest > half || (rest == half && odd);
    return fraction < one ? Fixed{integer, fraction} : Fixed{Uint128{integer} + 1, 0};
}

std::strong_ordering compare_with_halves(Binary value, int power, Uint128 halves) {
    Natural left(value.mantissa);
    Natural right(halves);
    for (int rest = std::abs(power); rest > 0; rest -= step)
        (power > 0 ? left : right) *=
            small_powers_of_five[static_cast<size_t>(std::min(rest, step))];
    const int twos = value.exponent + 1 + power;
    (twos > 0 ? left : right) <<= std::abs(twos);
    return left <=> right;
}

Fixed split(Uint128 digits, int places) {
    if (places == 0)
        return {digits, 0};
    const Division parts(digits, powers_of_ten[static_cast<size_t>(places)]);
    return {parts.quotient, parts.rest};
}

Scientific round_scientific(Binary value, int places) {
    if (value.mantissa == 0)
        return {0, 0};
    const Uint128 one = powers_of_ten[static_cast<size_t>(places)];
    int exponent = std::max(guess_exponent(value), min_exponent);
    Scaled scaled = scale(value, places - exponent);
    if (scaled.shift > 128)
        return {0, exponent};
    Uint128 digits = scaled.shift < 128 ? scaled.units >> scaled.shift : 0;
    if (digits >= 10 * one) {
        scaled = scale(value, places - ++exponent);
        digits = scaled.units >> scaled.shift;
    }
    digits += rounds_up(value, places - exponent, scaled, digits);
    if (digits == 10 * one)
        return {one, exponent + 1};
    return {digits, exponent};
}

// R. Giulietti, "The Schubfach way to render doubles", 2020: of the multiples of a power of ten
// that is just finer than the distance to the neighbours one or two lie nearer to the value than to
// them, and of the ten times coarser ones at most one.
Shortest shortest(Binary value) {
    const uint64_t mantissa = value.mantissa;
    const int exponent = value.exponent;
    if (mantissa == 0)
        return {0, 0};
    // The neighbour below a power of two is half as far away as that above.
    const bool is_power = mantissa == uint64_t{1} << 52 && exponent > -1074;
    const int power = -((exponent * 1262611 - (is_power ? 524031 : 0)) >> 22);
    const auto scaled = [=](uint64_t quarters) {
        return scale_to_odd({quarters, exponent}, power);
    };
    const uint64_t here = scaled(4 * mantissa);
    // What lies in the middle between two values is read as the one with the even mantissa.
    const uint64_t odd = mantissa & 1;
    const uint64_t lower = scaled(4 * mantissa - 2 + is_power) + odd;
    const uint64_t upper = scaled(4 * mantissa + 2) - odd;
    const auto strip = [](Shortest number) {
        for (; number.digits % 10 == 0; number.digits /= 10)
            ++number.exponent;
        return number;
    };
    const uint64_t fine = here / 4;
    if (fine >= 10) {
        const uint64_t coarse = fine / 10;
        const bool above = 40 * coarse + 40 <= upper;
        if ((lower <= 40 * coarse) != above)
            return strip({coarse + above, 1 - power});
    }
    const bool above = 4 * fine + 4 <= upper;
    if ((lower <= 4 * fine) != above)
        return strip({fine + above, -power});
    const uint64_t middle = 4 * fine + 2;
    return strip({fine + (here > middle || (here == middle && (fine & 1))), -power});
}

} // namespace kestu
