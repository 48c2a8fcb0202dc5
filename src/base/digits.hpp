// Integers as digits.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestu {

// 10^0 to 10^19, all that 64 bits hold.
constexpr auto powers_of_ten = [] {
    std::array<uint64_t, 20> powers{1};
    for (size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

constexpr auto digit_pairs = [] {
    std::array<char, 200> text{};
    for (size_t i = 0; i < 100; ++i) {
        text[2 * i] = static_cast<char>('0' + i / 10);
        text[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return text;
}();

inline const char *digits_of(bool upper_case) {
    return upper_case ? "0123456789ABCDEF" : "0123456789abcdef";
}

// The number of decimal digits of `value`. Its logarithm is taken as 1233/4096 of the binary one,
// which is one too small from a power of ten to the next power of two, and right elsewhere.
inline size_t decimal_width(uint64_t value) {
    const auto width = static_cast<size_t>(std::bit_width(value | 1)) * 1233 >> 12;
    return width + (value >= powers_of_ten[width] || value == 0);
}

// Writes the last `count` decimal digits of `value`, leading zeros included, to `out`.
inline void write_decimal(char *out, uint64_t value, size_t count) {
    char *end = out + count;
    const auto write_pair = [&end](uint32_t below_100) {
        end -= 2;
        std::memcpy(end, &digit_pairs[2 * below_100], 2);
    };
    for (; count > 8; count -= 8) {
        auto eight = static_cast<uint32_t>(value % 100000000);
        value /= 100000000;
        for (int i = 0; i < 4; ++i, eight /= 100)
            write_pair(eight % 100);
    }
    auto rest = static_cast<uint32_t>(value);
    for (; count >= 2; count -= 2, rest /= 100)
        write_pair(rest % 100);
    if (count > 0)
        *out = static_cast<char>('0' + rest % 10);
}

// The same for digits of `bits` bits.
inline size_t binary_width(uint64_t value, int bits) {
    return static_cast<size_t>((std::bit_width(value | 1) + bits - 1) / bits);
}

inline void write_binary(char *out, uint64_t value, size_t count, int bits, bool upper_case) {
    const char *digits = digits_of(upper_case);
    for (; count > 0; --count, value >>= bits)
        out[count - 1] = digits[value & ((uint64_t{1} << bits) - 1)];
}

// An integer in the base and case of its conversion: o, x and X, and decimal for all others.
struct Integer {
    uint64_t value;
    char conversion;

    unsigned base() const { return conversion == 'o' ? 8 : hexadecimal() ? 16 : 10; }
    bool hexadecimal() const { return upper_case() || conversion == 'x'; }
    bool upper_case() const { return conversion == 'X'; }

    size_t width() const {
        switch (base()) {
        case 8:
            return binary_width(value, 3);
        case 16:
            return binary_width(value, 4);
        default:
            return decimal_width(value);
        }
    }

    // Writes the last `count` digits.
    void write(char *out, size_t count) const {
        switch (base()) {
        case 8:
            return write_binary(out, value, count, 3, false);
        case 16:
            return write_binary(out, value, count, 4, upper_case());
        default:
            return write_decimal(out, value, count);
        }
    }
};

} // namespace kestu
