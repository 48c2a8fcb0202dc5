// Lengths in bytes and in characters, and trimming.
#include "kestu_str.h"

#include <cctype>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace {

using Bytes [[gnu::vector_size(16)]] = unsigned char;
using SignedBytes [[gnu::vector_size(16)]] = signed char;

// Each byte of a register counts up to 255.
constexpr size_t step = sizeof(Bytes);
constexpr size_t max_counted = 255 * step;

// The number of bytes among the next eight that do not continue a character, which those do whose
// upper bits are 10.
size_t first_bytes_of_word(const char *s) {
    constexpr uint64_t ones = 0x0101010101010101;
    uint64_t word = 0;
    std::memcpy(&word, s, sizeof word);
    const uint64_t continuing = word >> 7 & ~word >> 6 & ones;
    return sizeof word - (continuing * ones >> 56);
}

// The same among the next `size` bytes, of which there are at most max_counted. As signed numbers
// the bytes that continue a character, 0x80 to 0xBF, are the smallest.
size_t count_first_bytes(const char *s, size_t size) {
    constexpr auto last_continuing = static_cast<signed char>(0xBF);
    Bytes counts = {};
    for (; size >= step; size -= step, s += step) {
        SignedBytes bytes;
        std::memcpy(&bytes, s, step);
        counts -= reinterpret_cast<Bytes>(bytes > last_continuing);
    }
    const __m128i sums = _mm_sad_epu8(reinterpret_cast<__m128i>(counts), _mm_setzero_si128());
    auto total = static_cast<size_t>(_mm_cvtsi128_si64(sums) +
                                     _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
    for (; size >= sizeof(uint64_t); size -= sizeof(uint64_t), s += sizeof(uint64_t))
        total += first_bytes_of_word(s);
    for (; size > 0; --size, ++s)
        total += (*s & 0xC0) != 0x80;
    return total;
}

} // namespace

int kestu_str_len(const char *s) {
    return static_cast<int>(std::strlen(s));
}

// Counts in blocks that are still in the nearest cache when they are looked at again.
size_t kestu_str_utf8_len(const char *s) {
    size_t characters = 0;
    for (;; s += max_counted) {
        const size_t size = strnlen(s, max_counted);
        characters += count_first_bytes(s, size);
        if (size < max_counted)
            return characters;
    }
}

char *kestu_str_trim(char *s) {
    if (!s || !*s) // which may stand where nothing can be written
        return s;
    const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    char *begin = s;
    while (is_space(*begin))
        ++begin;
    char *end = begin + std::strlen(begin);
    while (end > begin && is_space(end[-1]))
        --end;
    const size_t length = static_cast<size_t>(end - begin);
    std::memmove(s, begin, length);
    s[length] = '\0';
    return s;
}
