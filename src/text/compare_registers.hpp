// Comparison without regard to the case of ASCII letters, in registers of any width.
//
// Each file that includes this is compiled for other processors: everything is internal to the
// file, so that no code for one leaks into another.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace kestu {
namespace {

constexpr ptrdiff_t page_size = 4096;

inline signed char fold(char c) {
    return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

inline ptrdiff_t offset_in_page(const char *p) {
    return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(p) % page_size);
}

// One bit for each of the next bytes where a comparison stops: where the folded bytes differ or
// `s1` ends. Two bytes are the same letter when they differ in the bit of the case alone and one is
// a letter; one comparison finds the letters once they are moved to the top of the signed numbers.
template <typename Register>
[[gnu::always_inline, gnu::no_sanitize_address]] inline unsigned stops(const char *s1,
                                                                       const char *s2) {
    using Bytes = typename Register::Bytes;
    constexpr unsigned char case_bit = 0x20;
    const Bytes a = *reinterpret_cast<const typename Register::Anywhere *>(s1);
    const Bytes b = *reinterpret_cast<const typename Register::Anywhere *>(s2);
    const Bytes from_top = (a | case_bit) + static_cast<unsigned char>(127 - 'z');
    const auto letters = reinterpret_cast<Bytes>(
        reinterpret_cast<typename Register::SignedBytes>(from_top) > 127 - 26);
    const Bytes difference = a ^ b;
    const auto same = reinterpret_cast<Bytes>(difference == (difference & case_bit & letters));
    const Bytes going_on = same < a ? same : a; // zero where the letters differ or `s1` ends
    return Register::mask(reinterpret_cast<Bytes>(going_on == 0));
}

// At the first of the bytes where a comparison stops. Most comparisons stop at two terminators.
[[gnu::always_inline, gnu::no_sanitize_address]] inline int
difference_at(const char *s1, const char *s2, unsigned found) {
    const int at = std::countr_zero(found);
    return s1[at] == s2[at] ? 0 : fold(s1[at]) - fold(s2[at]);
}

// Reads whole registers where they end in the page in which they begin: bytes behind a terminator
// are read and ignored, but never in a page that the string does not reach. The last register of a
// page may begin with bytes that were compared before.
template <typename Register>
[[gnu::no_sanitize_address]] int compare_folded(const char *s1, const char *s2) {
    constexpr auto step = static_cast<ptrdiff_t>(sizeof(typename Register::Bytes));
    const char *const start = s1;
    for (;;) {
        const ptrdiff_t readable = page_size - std::max(offset_in_page(s1), offset_in_page(s2));
        s1 += readable;
        s2 += readable;
        ptrdiff_t i = -readable;
        for (; i <= -step; i += step)
            if (const unsigned found = stops<Register>(s1 + i, s2 + i))
                return difference_at(s1 + i, s2 + i, found);
        if (i != 0 && s1 - start >= step) {
            if (const unsigned found = stops<Register>(s1 - step, s2 - step))
                return difference_at(s1 - step, s2 - step, found);
            i = 0;
        }
        for (; i != 0; ++i)
            if (fold(s1[i]) != fold(s2[i]) || !s1[i])
                return fold(s1[i]) - fold(s2[i]);
    }
}

} // namespace
} // namespace kestu
