// CRCs folded in registers of one lane.
#include "base/crc_fold.hpp"
#include "base/crc_kernel.hpp"

namespace kestu {

uint32_t crc32_folded_128(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32, OneLane>(crc, data, size);
}

uint32_t crc32c_folded_128(uint32_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc32c, OneLane>(crc, data, size);
}

uint16_t crc16_folded_128(uint16_t crc, const unsigned char *data, size_t size) {
    return crc_folded<Crc16, OneLane>(crc, data, size);
}

} // namespace kestu
