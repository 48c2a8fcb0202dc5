// Natural numbers of a fixed number of bits, for the few places where 128 do not do.
#pragma once

#include <array>
#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace kestu {

using Uint128 = unsigned __int128;

// The two results of dividing `n` by `divisor`, where the quotient must fit. One instruction: the
// division of 128-bit integers that compilers call is a function of their own run-time library.
struct Division {
    Division(Uint128 n, uint64_t divisor) {
        asm("div %[divisor]"
            : "=a"(quotient), "=d"(rest)
            : "a"(static_cast<uint64_t>(n)),
              "d"(static_cast<uint64_t>(n >> 64)), [divisor] "r"(divisor)
            : "cc");
    }

    uint64_t quotient;
    uint64_t rest;
};

// Arithmetic modulo 2^1152. That holds every finite double, and every double scaled by the power of
// ten that brings it to 20 digits.
class Natural {
  public:
    static constexpr int bits = 1152;

    constexpr explicit Natural(Uint128 value)
        : words_{static_cast<uint64_t>(value), static_cast<uint64_t>(value >> 64)} {}

    constexpr Natural &operator*=(uint64_t factor) {
        Uint128 carry = 0;
        for (uint64_t &word : words_) {
            carry += Uint128{word} * factor;
            word = static_cast<uint64_t>(carry);
            carry >>= 64;
        }
        return *this;
    }

    constexpr Natural &operator/=(uint64_t divisor) {
        Uint128 rest = 0;
        for (size_t i = words_.size(); i-- > 0;) {
            rest = rest << 64 | words_[i];
            words_[i] = static_cast<uint64_t>(rest / divisor);
            rest %= divisor;
        }
        return *this;
    }

    constexpr Natural &operator<<=(int count) {
        const auto whole = static_cast<size_t>(count / 64);
        const int part = count % 64;
        for (size_t i = words_.size(); i-- > 0;) {
            const uint64_t high = i >= whole ? words_[i - whole] : 0;
            const uint64_t low = i > whole ? words_[i - whole - 1] : 0;
            words_[i] = part == 0 ? high : high << part | low >> (64 - part);
        }
        return *this;
    }

    constexpr int bit_width() const {
        for (size_t i = words_.size(); i-- > 0;)
            if (words_[i] != 0)
                return static_cast<int>(64 * i) + static_cast<int>(std::bit_width(words_[i]));
        return 0;
    }

    // The 128 bits that begin with the highest one that is set.
    constexpr Uint128 leading_bits() const {
        Natural top = *this;
        top <<= bits - bit_width();
        return Uint128{top.words_[top.words_.size() - 1]} << 64 | top.words_[top.words_.size() - 2];
    }

    constexpr std::strong_ordering operator<=>(const Natural &other) const {
        for (size_t i = words_.size(); i-- > 0;)
            if (words_[i] != other.words_[i])
                return words_[i] <=> other.words_[i];
        return std::strong_ordering::equal;
    }

  private:
    std::array<uint64_t, bits / 64> words_;
};

} // namespace kestu
