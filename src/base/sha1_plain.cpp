// SHA-1's compression on every processor (FIPS 180-1). This defines the result of every other
// kernel.
#include "base/sha1_kernel.hpp"

#include <bit>
#include <cstring>
#include <utility>

namespace kestu {
namespace {

uint32_t load_big_endian(const unsigned char *bytes) {
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap32(word);
}

template <int t>
uint32_t mix(uint32_t b, uint32_t c, uint32_t d) {
    if constexpr (t < 20)
        return (d ^ (b & (c ^ d))) + 0x5A827999;
    else if constexpr (t < 40)
        return (b ^ c ^ d) + 0x6ED9EBA1;
    else if constexpr (t < 60)
        return ((b & c) | (d & (b | c))) + 0x8F1BBCDC;
    else
        return (b ^ c ^ d) + 0xCA62C1D6;
}

// The words change their names from round to round instead of their places, and the sixteen last
// words of the message's expansion are kept.
template <int t>
[[gnu::always_inline]] inline void round(uint32_t (&words)[5], uint32_t (&message)[16]) {
    const uint32_t a = words[(80 - t) % 5];
    uint32_t &b = words[(81 - t) % 5];
    const uint32_t c = words[(82 - t) % 5];
    const uint32_t d = words[(83 - t) % 5];
    uint32_t &e = words[(84 - t) % 5];
    uint32_t &w = message[t % 16];
    if constexpr (t >= 16)
        w = std::rotl(w ^ message[(t + 2) % 16] ^ message[(t + 8) % 16] ^ message[(t + 13) % 16],
                      1);
    e += std::rotl(a, 5) + mix<t>(b, c, d) + w;
    b = std::rotl(b, 30);
}

template <int... t>
[[gnu::always_inline]] inline void all_rounds(uint32_t (&words)[5], uint32_t (&message)[16],
                                              std::integer_sequence<int, t...>) {
    (round<t>(words, message), ...);
}

} // namespace

void sha1_compress_plain(uint32_t *state, const unsigned char *blocks, size_t count) {
    for (; count > 0; --count, blocks += sha1_block_size) {
        uint32_t message[16];
        for (int i = 0; i < 16; ++i)
            message[i] = load_big_endian(blocks + 4 * i);
        uint32_t words[5] = {state[0], state[1], state[2], state[3], state[4]};
        all_rounds(words, message, std::make_integer_sequence<int, 80>{});
        for (int i = 0; i < 5; ++i)
            state[i] += words[i];
    }
}

} // namespace kestu
