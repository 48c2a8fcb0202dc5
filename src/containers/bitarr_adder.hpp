// Counting bits with full adders, for registers of any width.
//
// Sixteen registers are summed bit by bit into binary digits of weight 1 to 16 that stay in
// registers of their own, so that bits need to be counted only in the carry out of every sixteenth
// register. Harley's and Seal's method; see Mula, Kurz and Lemire, "Faster Population Counts Using
// AVX2 Instructions", The Computer Journal 61, 2018.
//
// Each file that includes this is compiled for other processors: everything is internal to the
// file, so that no code for one leaks into another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestu {
namespace {

// The number of bits set in each 64-bit lane, by sums of ever wider fields.
template <typename Lanes>
Lanes bits_in_lanes(Lanes x) {
    x -= (x >> 1) & 0x5555555555555555;
    x = (x & 0x3333333333333333) + ((x >> 2) & 0x3333333333333333);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0F;
    x += x >> 8;
    x += x >> 16;
    x += x >> 32;
    return x & 0x7F;
}

template <typename Register>
class Adder {
  public:
    static constexpr size_t words_in_register = sizeof(Register) / sizeof(uint64_t);
    static constexpr size_t words_in_round = 16 * words_in_register;

    void add_round(const uint64_t *words) { sixteens_ += bits_in_lanes(carry<4>(words)); }

    size_t total() const {
        size_t sum = 16 * sum_of_lanes(sixteens_);
        for (size_t level = 0; level < 4; ++level)
            sum += sum_of_lanes(bits_in_lanes(digits_[level])) << level;
        return sum;
    }

  private:
    // Adds 2^level registers from `words` on and returns the carry, which has that weight.
    template <int level>
    Register carry(const uint64_t *&words) {
        if constexpr (level == 0) {
            Register next;
            std::memcpy(&next, words, sizeof next);
            words += words_in_register;
            return next;
        } else {
            const Register a = carry<level - 1>(words);
            const Register b = carry<level - 1>(words);
            Register &digit = digits_[level - 1];
            const Register half = digit ^ a;
            const Register out = (digit & a) | (half & b);
            digit = half ^ b;
            return out;
        }
    }

    static size_t sum_of_lanes(Register lanes) {
        size_t sum = 0;
        for (size_t i = 0; i < words_in_register; ++i)
            sum += lanes[i];
        return sum;
    }

    Register digits_[4] = {};
    Register sixteens_ = {};
};

template <typename Register>
size_t count_bits(const uint64_t *words, size_t n) {
    Adder<Register> adder;
    for (; n >= adder.words_in_round; n -= adder.words_in_round, words += adder.words_in_round)
        adder.add_round(words);
    size_t rest = 0;
    for (size_t i = 0; i < n; ++i)
        rest += bits_in_lanes(words[i]);
    return adder.total() + rest;
}

} // namespace
} // namespace kestu
