// What checksums, bit arrays and texts may use of the processor. A feature counts only when the
// operating system saves the registers that it works on.
#pragma once

#include <cstdint>

namespace kestu {

struct CpuFeatures {
    bool clmul = false;    // carry-less multiplication and what goes with it in 128-bit registers
    bool clmul256 = false; // two products an instruction
    bool clmul512 = false; // four products an instruction
    bool sha = false;      // the SHA-1 instructions
    bool avx2 = false;     // integers in 256-bit registers
    bool bytes512 = false; // bytes in 512-bit registers
    bool count512 = false; // the number of bits set in each word of a 512-bit register
};

// What the processor and the operating system say of themselves; zeros where they say nothing.
struct CpuAnswers {
    uint32_t leaf1_ecx = 0;
    uint32_t leaf7_ebx = 0;
    uint32_t leaf7_ecx = 0;
    uint64_t xcr0 = 0; // the register sets that the operating system saves
};

CpuFeatures features_of(const CpuAnswers &answers);

CpuFeatures cpu_features();

} // namespace kestu
