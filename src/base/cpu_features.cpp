// Asking the processor, apart from understanding its answers.
#include "base/cpu_features.hpp"

#include <cpuid.h>

#define _Bool bool // the header is written for C, and Clang has no such word in C++
#include <sys/platform/x86.h>
#undef _Bool

namespace kestu {
namespace {

constexpr uint64_t saved_128 = 1 << 1;
constexpr uint64_t saved_256 = saved_128 | 1 << 2;
constexpr uint64_t saved_512 = saved_256 | 1 << 5 | 1 << 6 | 1 << 7;

constexpr uint32_t baseline = bit_SSSE3 | bit_SSE4_1;
constexpr uint32_t clmul_baseline = baseline | bit_PCLMUL;

constexpr bool has_all(uint64_t answer, uint64_t wanted) {
    return (answer & wanted) == wanted;
}

// Only to be called when leaf 1 reports OSXSAVE.
uint64_t read_xcr0() {
    uint32_t low = 0;
    uint32_t high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return uint64_t{high} << 32 | low;
}

} // namespace

// The 128-bit registers are part of x86-64, so every system saves them.
CpuFeatures features_of(const CpuAnswers &answers) {
    CpuFeatures features;
    features.avx2 = has_all(answers.leaf1_ecx, bit_AVX) && has_all(answers.leaf7_ebx, bit_AVX2) &&
                    has_all(answers.xcr0, saved_256);
    const bool avx512 = features.avx2 && has_all(answers.leaf7_ebx, bit_AVX512F) &&
                        has_all(answers.xcr0, saved_512);
    features.bytes512 = avx512 && has_all(answers.leaf7_ebx, bit_AVX512BW);
    features.count512 = avx512 && has_all(answers.leaf7_ecx, bit_AVX512VPOPCNTDQ);
    features.clmul = has_all(answers.leaf1_ecx, clmul_baseline);
    features.clmul256 =
        features.clmul && features.avx2 && has_all(answers.leaf7_ecx, bit_VPCLMULQDQ);
    features.clmul512 = features.clmul256 && avx512;
    features.sha = has_all(answers.leaf1_ecx, baseline) && has_all(answers.leaf7_ebx, bit_SHA);
    return features;
}

// Asks the C library, which has asked the processor: a program that replays another one through
// kestu_cpu_cpuid_comm must not make the checksums use instructions that this one lacks.
CpuFeatures cpu_features() {
    constexpr unsigned ebx = 1;
    constexpr unsigned ecx = 2;
    const auto leaf1 = *__x86_get_cpuid_feature_leaf(CPUID_INDEX_1);
    const auto leaf7 = *__x86_get_cpuid_feature_leaf(CPUID_INDEX_7);
    CpuAnswers answers;
    answers.leaf1_ecx = leaf1.cpuid_array[ecx];
    answers.leaf7_ebx = leaf7.cpuid_array[ebx];
    answers.leaf7_ecx = leaf7.cpuid_array[ecx];
    if (has_all(answers.leaf1_ecx, bit_OSXSAVE))
        answers.xcr0 = read_xcr0();
    return features_of(answers);
}

} // namespace kestu
