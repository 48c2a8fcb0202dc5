// Bit arrays beside texts of '0' and '1'.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_bitarr.h"

#include <iterator>

namespace kestu::fuzz {

// The bits as text, bit 0 first. The array does not contradict itself and is 0 where it has
// to be.
inline std::string checked_text(const kestu_bitarr_t *ba) {
    std::string text;
    for (size_t k = 0; k < ba->nbits; ++k)
        text += ba->words[k / 64] >> k % 64 & 1 ? '1' : '0';
    require(ba->nwords == (ba->nbits + 63) / 64);
    require(ba->capacity >= std::max<size_t>(8, ba->nwords));
    for (size_t k = ba->nbits; k < ba->capacity * 64; ++k)
        require(!(ba->words[k / 64] >> k % 64 & 1));
    return text;
}

// Arrays that are released with the object.
struct Arrays {
    kestu_bitarr_t *of[3] = {};

    Arrays() = default;
    Arrays(const Arrays &) = delete;
    Arrays &operator=(const Arrays &) = delete;
    ~Arrays() {
        for (kestu_bitarr_t *array : of)
            kestu_bitarr_free(array);
    }
};

inline void set_bit(kestu_bitarr_t *ba, size_t k) {
    ba->words[k / 64] |= uint64_t{1} << k % 64;
}

// Three arrays beside the texts that they should be.
class BitModel {
  public:
    explicit BitModel(Input &input) : in(input) {}

    void run() {
        while (!in.empty()) {
            step();
            for (size_t k = 0; k < 3; ++k) {
                const auto ones = std::count(texts[k].begin(), texts[k].end(), '1');
                const auto set = static_cast<size_t>(ones);
                require((arrays.of[k] ? checked_text(arrays.of[k]) : "") == texts[k]);
                require(kestu_bitarr_num_bits_set(arrays.of[k]) == set);
                require(kestu_bitarr_num_bits_cleared(arrays.of[k]) == texts[k].size() - set);
            }
        }
    }

  private:
    size_t below(size_t n) { return in.take<uint16_t>() % n; }

    void resize() {
        const size_t n = below(4) ? below(200) : below(3000);
        require(succeeded(kestu_bitarr_resize(&arrays.of[i], n)));
        texts[i].resize(n, '0');
    }
    void change_all() {
        const struct {
            void (*change)(kestu_bitarr_t *);
            char of_0, of_1; // what bits become
        } changes[] = {{kestu_bitarr_set_all, '1', '1'},
                       {kestu_bitarr_clear_all, '0', '0'},
                       {kestu_bitarr_toggle_all, '1', '0'}};
        const auto &c = changes[below(3)];
        c.change(arrays.of[i]);
        for (char &bit : texts[i])
            bit = bit == '0' ? c.of_0 : c.of_1;
    }
    void set_some() {
        for (size_t n = texts[i].size() / 3; n > 0; --n) {
            const size_t k = below(texts[i].size());
            set_bit(arrays.of[i], k);
            texts[i][k] = '1';
        }
    }
    void clone() {
        if (i == j)
            return;
        kestu_bitarr_free(arrays.of[j]);
        require(succeeded(kestu_bitarr_clone(arrays.of[i], &arrays.of[j])));
        require((arrays.of[j] == nullptr) == texts[i].empty());
        texts[j] = texts[i];
    }
    // The result may be one of the operands.
    void combine() {
        const size_t out = below(3);
        const bool is_or = below(2);
        require(succeeded((is_or ? kestu_bitarr_or : kestu_bitarr_and)(arrays.of[i], arrays.of[j],
                                                                       &arrays.of[out])));
        std::string a = texts[i], b = texts[j];
        a.resize(std::max(a.size(), b.size()), '0');
        b.resize(a.size(), '0');
        for (size_t k = 0; k < a.size(); ++k)
            a[k] = is_or ? std::max(a[k], b[k]) : std::min(a[k], b[k]);
        texts[out] = a;
    }
    void step() {
        constexpr void (BitModel::*steps[])() = {&BitModel::resize,   &BitModel::change_all,
                                                 &BitModel::set_some, &BitModel::clone,
                                                 &BitModel::combine,  &BitModel::combine};
        i = below(3);
        j = below(3);
        (this->*steps[below(std::size(steps))])();
    }

    Arrays arrays;
    std::string texts[3];
    size_t i = 0, j = 0;
    Input &in;
};

} // namespace kestu::fuzz
