// The ways to compute the CRCs, of which the best that the processor can is taken. All give the
// same results.
#pragma once

#include "util/cpu_features.hpp"
#include "util/crc_polynomial.hpp"

#include <span>

namespace kestu {

// Moves a register over `size` bytes; neither end is complemented.
template <typename Crc>
using CrcUpdate = typename Crc::Word(typename Crc::Word crc, const unsigned char *data,
                                     size_t size);

struct CrcPath {
    const char *name;
    bool CpuFeatures::*needs; // null: nothing
    CrcUpdate<Crc32> *crc32;
    CrcUpdate<Crc16> *crc16;

    bool runs_on(const CpuFeatures &features) const { return !needs || features.*needs; }
};

// From the plainest to the fastest.
std::span<const CrcPath> crc_paths();

const CrcPath &best_crc_path(const CpuFeatures &features);

// The path in use. The first CRC that is computed chooses it.
const CrcPath &crc_path();

// Takes `path`, which must run on this processor, from now on; or lets the next CRC choose again.
void force_crc_path(const CrcPath &path);
void forget_crc_path();

uint32_t crc32_folded_128(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_128(uint16_t crc, const unsigned char *data, size_t size);
uint32_t crc32_folded_256(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_256(uint16_t crc, const unsigned char *data, size_t size);
uint32_t crc32_folded_512(uint32_t crc, const unsigned char *data, size_t size);
uint16_t crc16_folded_512(uint16_t crc, const unsigned char *data, size_t size);

} // namespace kestu
