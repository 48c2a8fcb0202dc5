// Copying and appending within a bound.
#include "kestu_str.h"

#include "base/short_copy.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

using namespace kestu;

namespace {

constexpr size_t unbounded = SIZE_MAX;

// As strnlen, without its call for short texts. The blocks of memory in which a text begins, goes
// on and ends are read whole, which no tool that watches accesses to memory reports, and what is
// not of the text is left out.
[[gnu::always_inline, gnu::no_sanitize_address]] inline size_t length_of(const char *s,
                                                                         size_t most) {
    constexpr size_t block_size = sizeof(__m128i);
    constexpr size_t few = 4 * block_size;
    size_t before = reinterpret_cast<uintptr_t>(s) % block_size;
    size_t length = 0; // seen so far
    while (length < std::min(most, few)) {
        const __m128i block = *reinterpret_cast<const __m128i *>(s + length - before);
        const __m128i ends = _mm_cmpeq_epi8(block, _mm_setzero_si128());
        auto found = static_cast<unsigned>(_mm_movemask_epi8(ends)) >> before;
        if (most - length < block_size)
            found &= (1U << (most - length)) - 1;
        if (found != 0)
            return length + static_cast<size_t>(std::countr_zero(found));
        length += block_size - before;
        before = 0;
    }
    if (most == unbounded)
        return length + std::strlen(s + length);
    return length < most ? length + strnlen(s + length, most - length) : most;
}

[[gnu::always_inline, gnu::no_sanitize_address]] inline size_t copy(char *dst, const char *src,
                                                                    size_t size) {
    const size_t length = length_of(src, unbounded);
    if (length < size) {
        copy_bytes(dst, src, length + 1);
    } else if (size > 0) {
        copy_bytes(dst, src, size - 1);
        dst[size - 1] = '\0';
    }
    return length;
}

} // namespace

[[gnu::no_sanitize_address]] size_t kestu_str_strlcpy(char *dst, const char *src, size_t size) {
    return copy(dst, src, size);
}

[[gnu::no_sanitize_address]] size_t kestu_str_strlcat(char *dst, const char *src, size_t size) {
    const size_t found = length_of(dst, size);
    return found + copy(dst + found, src, size - found);
}
