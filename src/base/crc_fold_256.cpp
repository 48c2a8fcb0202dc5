// CRCs folded in registers of two lanes.
#include "base/crc_fold.hpp"
#include "base/crc_kernel.hpp"

namespace kestu {
namespace {

struct TwoLanes {
    using Register = __m256i;
    static constexpr int lanes = 2;

    static Register load(const unsigned char *data) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(data));
    }
    static Register widened(__m128i x) { return _mm256_zextsi128_si256(x); }
    static Register in_each_lane(__m128i x) { return _mm256_broadcastsi128_si256(x); }
    template <int i>
    static __m128i lane(Register x) {
        return _mm256_extracti128_si256(x, i);
    }
    template <int halves>
    static Register product(Register a, Register b) {
        return _mm256_clmulepi64_epi128(a, b, halves);
    }
};

} // namespace

uint32_t crc32_folded_256(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32, TwoLanes>(crc, data, size);
}

uint32_t crc32c_folded_256(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32c, TwoLanes>(crc, data, size);
}

uint16_t crc16_folded_256(uint16_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc16, TwoLanes>(crc, data, size);
}

} // namespace kestu
