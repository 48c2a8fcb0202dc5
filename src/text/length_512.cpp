// Counting characters in 512-bit registers.
//
// Blocks of memory are as wide as a register, which none reaches beyond: a block in which a text
// begins or ends is read whole, and what is not of the text is left out.
#include "text/length.hpp"

#include <bit>
#include <cstdint>
#include <immintrin.h>

namespace kestu {
namespace {

constexpr size_t block_size = sizeof(__m512i);
constexpr size_t blocks_in_step = 4;
constexpr size_t step = blocks_in_step * block_size;

// One bit for each byte of a block that ends the text, and for each that begins a character: as
// signed numbers the bytes that continue one, 0x80 to 0xBF, are the smallest.
uint64_t ends(__m512i block) {
    return _mm512_testn_epi8_mask(block, block);
}
uint64_t beginnings(__m512i block) {
    return _mm512_cmpgt_epi8_mask(block, _mm512_set1_epi8(static_cast<char>(0xBF)));
}

size_t count(uint64_t bits) {
    return static_cast<size_t>(std::popcount(bits));
}

// Steps of blocks in which the text goes on, up to as many as a byte can count; `s` moves behind.
[[gnu::no_sanitize_address]] size_t count_steps(const char *&s) {
    __m512i counts[blocks_in_step] = {};
    for (int i = 0; i < 255; ++i, s += step) {
        __m512i blocks[blocks_in_step];
        for (size_t b = 0; b < blocks_in_step; ++b)
            blocks[b] = _mm512_load_si512(s + b * block_size);
        const __m512i least = _mm512_min_epu8(_mm512_min_epu8(blocks[0], blocks[1]),
                                              _mm512_min_epu8(blocks[2], blocks[3]));
        if (ends(least) != 0)
            break;
        for (size_t b = 0; b < blocks_in_step; ++b)
            counts[b] = _mm512_mask_sub_epi8(counts[b], beginnings(blocks[b]), counts[b],
                                             _mm512_set1_epi8(-1));
    }
    __m512i sums = _mm512_setzero_si512();
    for (const __m512i &of_block : counts)
        sums = _mm512_add_epi64(sums, _mm512_sad_epu8(of_block, _mm512_setzero_si512()));
    uint64_t lanes[block_size / sizeof(uint64_t)];
    _mm512_storeu_si512(lanes, sums);
    size_t total = 0;
    for (const uint64_t lane : lanes)
        total += lane;
    return total;
}

} // namespace

// A step never reaches beyond a page, as it begins at a multiple of its size.
[[gnu::no_sanitize_address]] size_t characters_512(const char *s) {
    const size_t before = reinterpret_cast<uintptr_t>(s) % block_size;
    uint64_t of_text = ~uint64_t{0} << before;
    size_t characters = 0;
    for (s -= before;;) {
        const __m512i block = _mm512_load_si512(s);
        const uint64_t end = ends(block) & of_text;
        const uint64_t found = beginnings(block) & of_text;
        if (end != 0)
            return characters + count(found & (end ^ (end - 1)) >> 1);
        characters += count(found);
        of_text = ~uint64_t{0};
        s += block_size;
        for (const char *before_steps = nullptr;
             reinterpret_cast<uintptr_t>(s) % step == 0 && s != before_steps;) {
            before_steps = s;
            characters += count_steps(s);
        }
    }
}

} // namespace kestu
