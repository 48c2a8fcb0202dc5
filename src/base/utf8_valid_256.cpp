// Validating UTF-8 in 256-bit registers: three tables of 16 entries, looked up by the halves of
// each byte and of the one before, hold a bit for each way in which two bytes cannot follow each
// other. See Keiser and Lemire, "Validating UTF-8 In Less Than One Instruction Per Byte", Software:
// Practice and Experience 51, 2021.
#include "base/utf8_valid.hpp"

#include <cstring>

#include <immintrin.h>

namespace kestu {
namespace {

constexpr size_t step = 32;

enum Fault : unsigned char {
    too_short = 1 << 0,  // a first byte or ASCII where a character goes on
    too_long = 1 << 1,   // a character goes on behind ASCII
    overlong_3 = 1 << 2, // could be written with fewer bytes
    too_large = 1 << 3,  // beyond U+10FFFF
    surrogate = 1 << 4,
    overlong_2 = 1 << 5,
    too_large_1000 = 1 << 6, // the same as `overlong_4`, told apart by the other tables
    overlong_4 = 1 << 6,
    two_continue = 1 << 7, // fine where a third or fourth byte stands
};
constexpr unsigned char any_low_half = too_short | too_long | two_continue;

constexpr unsigned char by_first_high[16] = {too_long,
                                             too_long,
                                             too_long,
                                             too_long,
                                             too_long,
                                             too_long,
                                             too_long,
                                             too_long,
                                             two_continue,
                                             two_continue,
                                             two_continue,
                                             two_continue,
                                             too_short | overlong_2,
                                             too_short,
                                             too_short | overlong_3 | surrogate,
                                             too_short | too_large | too_large_1000 | overlong_4};

constexpr unsigned char large = any_low_half | too_large | too_large_1000;
constexpr unsigned char by_first_low[16] = {any_low_half | overlong_3 | overlong_2 | overlong_4,
                                            any_low_half | overlong_2,
                                            any_low_half,
                                            any_low_half,
                                            any_low_half | too_large,
                                            large,
                                            large,
                                            large,
                                            large,
                                            large,
                                            large,
                                            large,
                                            large,
                                            large | surrogate,
                                            large,
                                            large};

constexpr unsigned char goes_on = too_long | overlong_2 | two_continue;
constexpr unsigned char by_second_high[16] = {too_short,
                                              too_short,
                                              too_short,
                                              too_short,
                                              too_short,
                                              too_short,
                                              too_short,
                                              too_short,
                                              goes_on | overlong_3 | too_large_1000 | overlong_4,
                                              goes_on | overlong_3 | too_large,
                                              goes_on | surrogate | too_large,
                                              goes_on | surrogate | too_large,
                                              too_short,
                                              too_short,
                                              too_short,
                                              too_short};

__m256i in_both_lanes(const unsigned char (&table)[16]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i *>(table)));
}

__m256i high_halves(__m256i bytes) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
}

// The bytes `back` places before those of `bytes`, which `before` stand in front of.
template <int back>
__m256i earlier(__m256i bytes, __m256i before) {
    return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(before, bytes, 0x21), 16 - back);
}

// Not zero where the bytes cannot follow those before.
__m256i faults(__m256i bytes, __m256i before) {
    const __m256i first = earlier<1>(bytes, before);
    const __m256i pairs = _mm256_and_si256(
        _mm256_and_si256(_mm256_shuffle_epi8(in_both_lanes(by_first_high), high_halves(first)),
                         _mm256_shuffle_epi8(in_both_lanes(by_first_low),
                                             _mm256_and_si256(first, _mm256_set1_epi8(0x0F)))),
        _mm256_shuffle_epi8(in_both_lanes(by_second_high), high_halves(bytes)));
    // From 0x80 on where a character of three or four bytes goes on for the second or third time.
    const __m256i third =
        _mm256_subs_epu8(earlier<2>(bytes, before), _mm256_set1_epi8(0xE0 - 0x80));
    const __m256i fourth =
        _mm256_subs_epu8(earlier<3>(bytes, before), _mm256_set1_epi8(0xF0 - 0x80));
    const __m256i must_go_on =
        _mm256_and_si256(_mm256_or_si256(third, fourth), _mm256_set1_epi8(static_cast<char>(0x80)));
    return _mm256_xor_si256(must_go_on, pairs);
}

bool is_ascii(__m256i bytes) {
    return _mm256_movemask_epi8(bytes) == 0;
}

} // namespace

// Zeros stand behind the text, and end a character that is cut off as any ASCII would.
bool utf8_valid_256(const unsigned char *text, size_t size) {
    __m256i before = _mm256_setzero_si256();
    __m256i found = _mm256_setzero_si256();
    const auto check = [&](__m256i bytes) {
        if (!is_ascii(_mm256_or_si256(bytes, before)))
            found = _mm256_or_si256(found, faults(bytes, before));
        before = bytes;
    };
    for (; size >= step; text += step, size -= step)
        check(_mm256_loadu_si256(reinterpret_cast<const __m256i *>(text)));
    alignas(step) unsigned char rest[step] = {};
    std::memcpy(rest, text, size);
    check(_mm256_load_si256(reinterpret_cast<const __m256i *>(rest)));
    check(_mm256_setzero_si256());
    return _mm256_testz_si256(found, found);
}

} // namespace kestu
