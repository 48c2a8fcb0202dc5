// CRCs folded in registers of four lanes.
#include "base/crc_fold.hpp"
#include "base/crc_kernel.hpp"

namespace kestu {
namespace {

// GCC 12 warns of the unmasked forms of the two moves between lanes.
struct FourLanes {
    using Register = __m512i;
    static constexpr int lanes = 4;

    static Register load(const unsigned char *data) {
        return _mm512_loadu_si512(reinterpret_cast<const __m512i *>(data));
    }
    static Register widened(__m128i x) { return _mm512_zextsi128_si512(x); }
    static Register in_each_lane(__m128i x) { return _mm512_maskz_broadcast_i32x4(0xFFFF, x); }
    template <int i>
    static __m128i lane(Register x) {
        return _mm512_maskz_extracti32x4_epi32(0xF, x, i);
    }
    template <int halves>
    static Register product(Register a, Register b) {
        return _mm512_clmulepi64_epi128(a, b, halves);
    }
};

} // namespace

uint32_t crc32_folded_512(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32, FourLanes>(crc, data, size);
}

uint32_t crc32c_folded_512(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32c, FourLanes>(crc, data, size);
}

uint16_t crc16_folded_512(uint16_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc16, FourLanes>(crc, data, size);
}

} // namespace kestu
