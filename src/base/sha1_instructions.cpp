// SHA-1's compression by the processor's own instructions, four rounds at a time. See Gulley, Gopal
// and others, "Intel SHA Extensions", Intel 2013.
#include "base/sha1_kernel.hpp"

#include <immintrin.h>
#include <utility>

namespace kestu {
namespace {

__m128i load(const void *bytes) {
    return _mm_loadu_si128(static_cast<const __m128i *>(bytes));
}

using Words [[gnu::vector_size(16)]] = uint32_t;

__m128i add(__m128i a, __m128i b) {
    return reinterpret_cast<__m128i>(reinterpret_cast<Words>(a) + reinterpret_cast<Words>(b));
}

// The first word stands in the highest place of a register, as the instructions want it.
struct State {
    __m128i abcd;
    __m128i e; // in the highest place, the rest 0; between rounds the a to d of four rounds ago
};

__m128i load_message(const unsigned char *bytes) {
    const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
    return _mm_shuffle_epi8(load(bytes), reversed);
}

// Rounds 4 * i to 4 * i + 3. `message` holds four words of the expansion in each register. What
// later steps need of it, and then the words of the `next` block, is prepared in the shadow of the
// rounds, which take the longest.
template <int i>
[[gnu::always_inline]] inline void four_rounds(State &state, __m128i (&message)[4],
                                               const unsigned char *next) {
    const __m128i w = message[i % 4];
    const __m128i e_and_words = i == 0 ? add(state.e, w) : _mm_sha1nexte_epu32(state.e, w);
    state.e = state.abcd;
    state.abcd = _mm_sha1rnds4_epu32(state.abcd, e_and_words, i / 5);
    if constexpr (i >= 3 && i < 19)
        message[(i + 1) % 4] = _mm_sha1msg2_epu32(message[(i + 1) % 4], w);
    if constexpr (i >= 2 && i < 18)
        message[(i + 2) % 4] ^= w;
    if constexpr (i >= 1 && i < 17)
        message[(i + 3) % 4] = _mm_sha1msg1_epu32(message[(i + 3) % 4], w);
    if constexpr (i >= 16)
        message[i % 4] = load_message(next + 16 * (i % 4));
}

template <int... i>
[[gnu::always_inline]] inline void all_rounds(State &state, __m128i (&message)[4],
                                              const unsigned char *next,
                                              std::integer_sequence<int, i...>) {
    (four_rounds<i>(state, message, next), ...);
}

} // namespace

void sha1_compress_by_instructions(uint32_t *words, const unsigned char *blocks, size_t count) {
    constexpr int reversed = 0x1B;
    State state = {_mm_shuffle_epi32(load(words), reversed),
                   _mm_set_epi32(static_cast<int>(words[4]), 0, 0, 0)};
    __m128i message[4] = {load_message(blocks), load_message(blocks + 16),
                          load_message(blocks + 32), load_message(blocks + 48)};
    for (; count > 0; --count) {
        const State before = state;
        blocks += count > 1 ? sha1_block_size : 0; // the last block is loaded twice
        all_rounds(state, message, blocks, std::make_integer_sequence<int, 20>{});
        state.abcd = add(state.abcd, before.abcd);
        state.e = _mm_sha1nexte_epu32(state.e, before.e);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i *>(words), _mm_shuffle_epi32(state.abcd, reversed));
    words[4] = static_cast<uint32_t>(_mm_extract_epi32(state.e, 3));
}

} // namespace kestu
