// Features of the processor: where cpuid tells them, and what checksums, bit arrays and texts may
// use.
#pragma once

#include "kestu_cpu_features.h"

namespace kestu {

// Where a word of features stands.
struct FeatureWord {
    uint32_t leaf;
    uint32_t subleaf;
    int reg; // as in kestu_cpu_feature_info_t
};

inline constexpr FeatureWord feature_words[KESTU_CPU_FEATURE_WORDS] = {
    {0x1, 0, 3},        {0x80000001, 0, 3}, {0x1, 0, 2}, {0x80000001, 0, 2}, {0x7, 0, 1},
    {0xD, 1, 0},        {0xF, 0, 3},        {0xF, 1, 3}, {0x10, 0, 1},       {0x7, 1, 0},
    {0x80000008, 0, 1}, {0x6, 0, 0},        {0x6, 0, 2}, {0x8000000A, 0, 3}, {0x7, 0, 2},
    {0x80000007, 0, 1}, {0x80000007, 0, 3}, {0x7, 0, 3}, {0x7, 1, 3},        {0x8000001F, 0, 0},
};

// Bits of XCR0: registers of 256 and 512 bits with those that lie in them, and matrices.
inline constexpr uint64_t saved_256 = 1 << 1 | 1 << 2;
inline constexpr uint64_t saved_512 = saved_256 | 1 << 5 | 1 << 6 | 1 << 7;
inline constexpr uint64_t saved_tiles = 1 << 17 | 1 << 18;

// Fills what the running system saves and permits.
void read_saved_registers(kestu_cpu_features_t &features);

// What this process may use of the real processor.
kestu_cpu_features_t features_here();

// What kernels ask for.
struct CpuFeatures {
    bool clmul = false;    // carry-less multiplication and what goes with it in 128-bit registers
    bool clmul256 = false; // two products an instruction
    bool clmul512 = false; // four products an instruction
    bool sha = false;      // the SHA-1 instructions
    bool avx2 = false;     // integers in 256-bit registers
    bool bytes512 = false; // bytes in 512-bit registers
    bool count512 = false; // the number of bits set in each word of a 512-bit register
};

CpuFeatures features_of(const kestu_cpu_features_t &features);

CpuFeatures cpu_features();

} // namespace kestu
