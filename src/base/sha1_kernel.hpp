// The ways to compute SHA-1's compression. All give the same results.
#pragma once

#include "base/dispatch.hpp"

#include <cstddef>
#include <cstdint>

namespace kestu {

constexpr size_t sha1_block_size = 64;

// Takes `count` blocks, at least one, that stand one after the other into the five chaining words.
using Sha1Compress = void(uint32_t *state, const unsigned char *blocks, size_t count);

struct Sha1Kernel {
    const char *name;
    bool CpuFeatures::*needs;
    Sha1Compress *compress;
};

extern Dispatch<Sha1Kernel> sha1_dispatch;

void sha1_compress_plain(uint32_t *state, const unsigned char *blocks, size_t count);
void sha1_compress_by_instructions(uint32_t *state, const unsigned char *blocks, size_t count);

} // namespace kestu
