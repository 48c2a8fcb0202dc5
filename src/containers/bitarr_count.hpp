// The ways to count the bits that are set in words. All give the same results.
#pragma once

#include "base/dispatch.hpp"

#include <cstddef>
#include <cstdint>

namespace kestu {

struct CountKernel {
    const char *name;
    bool CpuFeatures::*needs;
    size_t (*count)(const uint64_t *words, size_t n);
};

extern Dispatch<CountKernel> count_dispatch;

size_t count_bits_128(const uint64_t *words, size_t n);
size_t count_bits_256(const uint64_t *words, size_t n);
size_t count_bits_512(const uint64_t *words, size_t n);

} // namespace kestu
