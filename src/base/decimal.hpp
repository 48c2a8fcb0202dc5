// Exact decimal digits of doubles: rounded to the nearest, ties to the even digit, judged on the
// binary value as it is.
#pragma once

#include "base/natural.hpp"

#include <cstdint>
#include <optional>

namespace kestu {

// The most decimal places that are given: 10^19 is the largest power of ten below 2^64.
constexpr int max_places = 19;

// A finite double without its sign: `mantissa` * 2^`exponent`.
struct Binary {
    uint64_t mantissa;
    int exponent;
};

Binary to_binary(double value);

// `integer` + `fraction` / 10^places, where the integer has at most 20 digits.
struct Fixed {
    Uint128 integer;
    uint64_t fraction;
};

// Rounds to `places` decimal places, at most `max_places`. Nothing when the integer part reaches
// 2^64.
std::optional<Fixed> round_fixed(Binary value, int places);

// `digits` * 10^(`exponent` - places): the digits are places + 1 in number.
struct Scientific {
    Uint128 digits;
    int exponent;
};

// digits / 10^places in its two parts.
Fixed split(Uint128 digits, int places);

// Exponents below this one are not given: the digits of smaller values begin with zeros instead.
constexpr int min_exponent = -308;

// Rounds to one digit and `places` more, at most `max_places`, and finds the decimal exponent that
// holds after rounding. Zero has the exponent 0.
Scientific round_scientific(Binary value, int places);

// `digits` * 10^`exponent`.
struct Shortest {
    uint64_t digits;
    int exponent;
};

// The fewest digits that are nearer to a value than to its neighbours, and of those the ones that
// are nearest to it. The last digit is not 0, unless the value is.
Shortest shortest(Binary value);

// Whether value * 10^`power` is above, on or below `halves` / 2. Slow and always right; the others
// fall back on it when 128 bits cannot tell.
std::strong_ordering compare_with_halves(Binary value, int power, Uint128 halves);

} // namespace kestu
