// Comparison without regard to the case of ASCII letters.
#include "kestu_str.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <emmintrin.h>

namespace {

constexpr size_t page_size = 4096;
// A register of bytes, wherever they stand.
using Bytes [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = unsigned char;
using SignedBytes [[gnu::vector_size(16)]] = signed char;

constexpr ptrdiff_t step = sizeof(Bytes);

signed char fold(char c) {
    return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

uintptr_t offset_in_page(const char *p) {
    return reinterpret_cast<uintptr_t>(p) % page_size;
}

// One bit for each of the next bytes where a comparison stops: where the folded bytes differ or `a`
// ends. Two bytes are the same letter when they differ in the bit of the case alone and one is a
// letter; one comparison finds the letters once they are moved to the top of the signed numbers.
[[gnu::always_inline]] inline unsigned stops(Bytes a, Bytes b) {
    constexpr unsigned char case_bit = 0x20;
    const Bytes from_top = (a | case_bit) + static_cast<unsigned char>(127 - 'z');
    const auto letters =
        reinterpret_cast<Bytes>(reinterpret_cast<SignedBytes>(from_top) > 127 - 26);
    const Bytes difference = a ^ b;
    const auto same = reinterpret_cast<Bytes>(difference == (difference & case_bit & letters));
    const Bytes going_on = same < a ? same : a; // zero where the letters differ or `a` ends
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(going_on == 0)));
}

} // namespace

// Reads whole registers where they end in the page in which they begin: bytes behind a terminator
// are read and ignored, but never in a page that the string does not reach.
[[gnu::no_sanitize_address]] int kestu_str_stricmp(const char *s1, const char *s2) {
    for (;;) {
        const auto readable =
            static_cast<ptrdiff_t>(page_size - std::max(offset_in_page(s1), offset_in_page(s2)));
        const ptrdiff_t rest = readable % step;
        s1 += readable - rest;
        s2 += readable - rest;
        for (ptrdiff_t i = rest - readable; i != 0; i += step) {
            const unsigned found = stops(*reinterpret_cast<const Bytes *>(s1 + i),
                                         *reinterpret_cast<const Bytes *>(s2 + i));
            if (found != 0) {
                i += std::countr_zero(found);
                if (s1[i] == s2[i]) // both end
                    return 0;
                return fold(s1[i]) - fold(s2[i]);
            }
        }
        for (const char *end = s1 + rest; s1 != end; ++s1, ++s2)
            if (fold(*s1) != fold(*s2) || !*s1)
                return fold(*s1) - fold(*s2);
    }
}
