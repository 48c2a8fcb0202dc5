// Comparing short texts without regard to the case of ASCII letters, in 512-bit registers, wherever
// they begin.
#include "text/compare.hpp"
#include "text/compare_registers.hpp"

#include <immintrin.h>

namespace kestu {
namespace {

constexpr size_t block_size = sizeof(__m512i);

uint64_t zeros(__m512i bytes) {
    return _mm512_testn_epi8_mask(bytes, bytes);
}

// The bytes of a text up to its terminator, as far as a register takes them. Blocks of memory tell
// where that is, the later of which is not read when the text ends before.
[[gnu::always_inline, gnu::no_sanitize_address]] inline __m512i bytes_of(const char *s) {
    const size_t before = reinterpret_cast<uintptr_t>(s) % block_size;
    const char *const block = s - before;
    uint64_t ends = zeros(_mm512_load_si512(block)) >> before;
    if (ends == 0 && before > 0)
        ends = zeros(_mm512_load_si512(block + block_size)) << (block_size - before);
    return _mm512_maskz_loadu_epi8(ends ^ (ends - 1), s);
}

// One bit for each byte at which a comparison stops: where the folded bytes differ or `a` ends.
uint64_t stops(__m512i a, __m512i b) {
    const __m512i case_bit = _mm512_set1_epi8(0x20);
    const __m512i place = _mm512_sub_epi8(_mm512_or_si512(a, case_bit), _mm512_set1_epi8('a'));
    const uint64_t letters = _mm512_cmplt_epu8_mask(place, _mm512_set1_epi8(26));
    const uint64_t other_case =
        _mm512_mask_cmpeq_epi8_mask(letters, _mm512_xor_si512(a, b), case_bit);
    return (_mm512_cmpneq_epi8_mask(a, b) & ~other_case) | zeros(a);
}

} // namespace

// Long texts are read in fewer steps where they are.
[[gnu::no_sanitize_address]] int compare_folded_512(const char *s1, const char *s2) {
    for (int i = 0; i < 2; ++i, s1 += block_size, s2 += block_size)
        if (const uint64_t found = stops(bytes_of(s1), bytes_of(s2)))
            return difference_at(s1, s2, found);
    return compare_folded_256(s1, s2);
}

} // namespace kestu
