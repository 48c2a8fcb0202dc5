// The ways to compute the CRCs. All give the same results.
#pragma once

#include "base/crc_polynomial.hpp"
#include "base/dispatch.hpp"

namespace kestu {

// Moves a register over `size` bytes; neither end is complemented.
template <typename Crc>
using CrcUpdate = typename Crc::Word(typename Crc::Word crc, const unsigned char *data,
                                     size_t size);

struct CrcKernel {
    const char *name;
    bool CpuFeatures::*needs;
    CrcUpdate<Crc32> *crc32;
    CrcUpdate<Crc32c> *crc32c;
    CrcUpdate<Crc16> *crc16;
};

extern Dispatch<CrcKernel> crc_dispatch;

uint32_t crc32_folded_128(uint32_t crc, const unsigned char *data, size_t size);
uint32_t crc32c_folded_128(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_128(uint16_t crc, const unsigned char *data, size_t size);
uint32_t crc32_folded_256(uint32_t crc, const unsigned char *data, size_t size);
uint32_t crc32c_folded_256(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_256(uint16_t crc, const unsigned char *data, size_t size);
uint32_t crc32_folded_512(uint32_t crc, const unsigned char *data, size_t size);
uint32_t crc32c_folded_512(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_512(uint16_t crc, const unsigned char *data, size_t size);

} // namespace kestu
