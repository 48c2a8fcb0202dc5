// Comparison without regard to the case of ASCII letters, in registers of any width.
//
// No tool that watches accesses to memory may report a reader of texts. Blocks of memory are as
// wide as a register, which none reaches beyond: a block in which a text begins, goes on or ends is
// read whole, and what is not of the text is left out. Other places in memory are read only where
// the text is known to have all their bytes.
//
// Each file that includes this is compiled for other processors: everything is internal to the
// file, so that no code for one leaks into another.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestu {
namespace {

inline signed char fold(char c) {
    return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

// How many bytes of its block stand before a place.
template <typename Register>
size_t place_in_block(const char *s) {
    return reinterpret_cast<uintptr_t>(s) % sizeof(typename Register::Bytes);
}

template <typename Register>
[[gnu::always_inline, gnu::no_sanitize_address]] inline typename Register::Bytes
block_at(const char *s) {
    using Block [[gnu::may_alias]] = typename Register::Bytes;
    return *reinterpret_cast<const Block *>(s);
}

template <typename Register>
[[gnu::always_inline]] inline typename Register::Bytes bytes_at(const char *s) {
    typename Register::Bytes bytes;
    std::memcpy(&bytes, s, sizeof bytes);
    return bytes;
}

template <typename Register>
[[gnu::always_inline]] inline unsigned zeros(typename Register::Bytes bytes) {
    return Register::mask(reinterpret_cast<typename Register::Bytes>(bytes == 0));
}

// One bit for each byte at which a comparison stops: where the folded bytes differ or the first
// text, of `a`, ends. Two bytes are the same letter when they differ in the bit of the case alone
// and one is a letter; one comparison finds the letters once they are moved to the top of the
// signed numbers.
template <typename Register>
[[gnu::always_inline]] inline unsigned stops(typename Register::Bytes a,
                                             typename Register::Bytes b) {
    using Bytes = typename Register::Bytes;
    constexpr unsigned char case_bit = 0x20;
    const Bytes from_top = (a | case_bit) + static_cast<unsigned char>(127 - 'z');
    const auto letters = reinterpret_cast<Bytes>(
        reinterpret_cast<typename Register::SignedBytes>(from_top) > 127 - 26);
    const Bytes difference = a ^ b;
    const auto same = reinterpret_cast<Bytes>(difference == (difference & case_bit & letters));
    const Bytes going_on = same < a ? same : a; // zero where the letters differ or `a` ends
    return zeros<Register>(going_on);
}

// At the first of the bytes where a comparison stops. Most comparisons stop at two terminators.
[[gnu::always_inline]] inline int difference_at(const char *s1, const char *s2, unsigned found) {
    const int at = std::countr_zero(found);
    return s1[at] == s2[at] ? 0 : fold(s1[at]) - fold(s2[at]);
}

// Two texts on their way, and what came of it.
struct Comparison {
    const char *s1, *s2;
    int difference = 0;

    // Whether the comparison is over, at one of the `found` bytes.
    [[gnu::always_inline]] bool ends(unsigned found) {
        if (found == 0)
            return false;
        difference = difference_at(s1, s2, found);
        return true;
    }
    void advance(size_t bytes) {
        s1 += bytes;
        s2 += bytes;
    }
};

// Whether both texts begin at the same place in their blocks, as those from malloc do.
template <typename Register>
bool lie_alike(const Comparison &texts) {
    return place_in_block<Register>(texts.s1) == place_in_block<Register>(texts.s2);
}

// Compares texts that lie alike, block by block. False when `most` blocks do not decide.
template <typename Register>
[[gnu::always_inline, gnu::no_sanitize_address]] inline bool compare_alike(Comparison &texts,
                                                                           size_t most) {
    const size_t before = place_in_block<Register>(texts.s1);
    texts.advance(-before);
    for (unsigned of_text = ~0U << before; most-- > 0; of_text = ~0U) {
        const auto a = block_at<Register>(texts.s1), b = block_at<Register>(texts.s2);
        if (texts.ends(stops<Register>(a, b) & of_text))
            return true;
        texts.advance(sizeof a);
    }
    return false;
}

// Compares texts that do not lie alike, by the blocks of the first: what stands beside each of them
// is made up of two blocks of the second, the later of which is not read when the text ends before.
template <typename Register>
[[gnu::always_inline, gnu::no_sanitize_address]] inline bool compare_apart(Comparison &texts,
                                                                           size_t most) {
    using Bytes = typename Register::Bytes;
    constexpr size_t step = sizeof(Bytes);
    const size_t before = place_in_block<Register>(texts.s1);
    const char *const text2 = texts.s2;
    texts.advance(-before);
    const size_t shift = place_in_block<Register>(texts.s2);
    const char *block = texts.s2 - shift;
    const size_t before2 = text2 - block;
    // The first block may end before the second text begins.
    Bytes low = {};
    bool goes_on = true;
    if (before2 < step) {
        low = block_at<Register>(block);
        goes_on = zeros<Register>(low) >> before2 == 0;
    }
    unsigned of_block = before2 < step ? ~0U : ~0U << (before2 - step);
    for (unsigned of_text = ~0U << before; most-- > 0; of_text = of_block = ~0U) {
        block += step;
        Bytes high = {};
        if (goes_on) {
            high = block_at<Register>(block);
            goes_on = (zeros<Register>(high) & of_block) == 0;
        }
        const Bytes a = block_at<Register>(texts.s1);
        if (texts.ends(stops<Register>(a, Register::join(low, high, shift)) & of_text))
            return true;
        texts.advance(step);
        low = high;
    }
    return false;
}

// As long as the second text goes on beyond what stands beside a block of the first, that is read
// where it is. Begins between two blocks of the first text.
template <typename Register>
[[gnu::always_inline, gnu::no_sanitize_address]] inline bool compare_far_apart(Comparison &texts) {
    constexpr size_t step = sizeof(typename Register::Bytes);
    const size_t before = place_in_block<Register>(texts.s2);
    const char *block = texts.s2 - before;
    if (zeros<Register>(block_at<Register>(block)) >> before != 0)
        return false;
    for (;;) {
        block += step;
        if (zeros<Register>(block_at<Register>(block)) != 0)
            return false;
        const auto a = block_at<Register>(texts.s1), b = bytes_at<Register>(texts.s2);
        if (texts.ends(stops<Register>(a, b)))
            return true;
        texts.advance(step);
    }
}

// `Narrow` is for texts that end soon.
template <typename Register, typename Narrow>
[[gnu::no_sanitize_address]] int compare_folded(const char *s1, const char *s2) {
    Comparison texts{s1, s2};
    if (lie_alike<Register>(texts)) {
        compare_alike<Register>(texts, SIZE_MAX);
        return texts.difference;
    }
    if (compare_apart<Narrow>(texts, 2) ||
        (place_in_block<Register>(texts.s1) != 0 && compare_apart<Narrow>(texts, 1)) ||
        compare_far_apart<Register>(texts))
        return texts.difference;
    compare_apart<Narrow>(texts, SIZE_MAX);
    return texts.difference;
}

} // namespace
} // namespace kestu
