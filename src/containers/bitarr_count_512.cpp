// Counting bits by the instruction that does it for eight words at once.
#include "containers/bitarr_count.hpp"

#include <immintrin.h>

namespace kestu {

size_t count_bits_512(const uint64_t *words, size_t n) {
    __m512i counts = _mm512_setzero_si512();
    const auto add = [&](__m512i eight_words) {
        counts = _mm512_add_epi64(counts, _mm512_popcnt_epi64(eight_words));
    };
    for (; n >= 8; n -= 8, words += 8)
        add(_mm512_loadu_si512(words));
    add(_mm512_maskz_loadu_epi64(static_cast<__mmask8>((1U << n) - 1), words));
    uint64_t lanes[8];
    _mm512_storeu_si512(lanes, counts);
    size_t sum = 0;
    for (const uint64_t lane : lanes)
        sum += lane;
    return sum;
}

} // namespace kestu
