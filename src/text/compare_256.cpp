// Comparing texts without regard to the case of ASCII letters in 256-bit registers.
#include "text/compare.hpp"
#include "text/compare_registers.hpp"

#include <immintrin.h>

namespace kestu {
namespace {

struct Register256 {
    using Bytes [[gnu::vector_size(32)]] = unsigned char;
    using SignedBytes [[gnu::vector_size(32)]] = signed char;

    static unsigned mask(Bytes bytes) {
        return static_cast<unsigned>(_mm256_movemask_epi8(reinterpret_cast<__m256i>(bytes)));
    }
};

// Registers that processors with wider ones join in few steps.
struct Register128 {
    using Bytes [[gnu::vector_size(16)]] = unsigned char;
    using SignedBytes [[gnu::vector_size(16)]] = signed char;

    static unsigned mask(Bytes bytes) {
        return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
    }
    // The bytes from number `shift` on of two blocks.
    static Bytes join(Bytes low, Bytes high, size_t shift) {
        const auto place = static_cast<unsigned char>(shift);
        const Bytes wanted = Bytes{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15} + place;
        const auto pick = [](Bytes bytes, Bytes places) {
            return reinterpret_cast<Bytes>(_mm_shuffle_epi8(reinterpret_cast<__m128i>(bytes),
                                                            reinterpret_cast<__m128i>(places)));
        };
        // A place from 128 on picks zero.
        return pick(low, wanted + 112) | pick(high, wanted - 16);
    }
};

} // namespace

int compare_folded_256(const char *s1, const char *s2) {
    return compare_folded<Register256, Register128>(s1, s2);
}

} // namespace kestu
