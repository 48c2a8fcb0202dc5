// What the real processor has and this process may use.
#include "base/cpu_features.hpp"

#include "base/kept_errno.hpp"

#include <algorithm>
#include <iterator>

#include <cpuid.h>
#include <sys/syscall.h>
#include <unistd.h>

#define _Bool bool // the header is written for C, and Clang has no such word in C++
#include <sys/platform/x86.h>
#undef _Bool

namespace kestu {
namespace {

// Only to be called when leaf 1 reports OSXSAVE.
uint64_t read_xcr0() {
    uint32_t low = 0;
    uint32_t high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return uint64_t{high} << 32 | low;
}

// Matrices are many bytes, which a process gets only when it has asked the system for them.
uint64_t permitted_tiles() {
    constexpr long get_permission = 0x1022;
    const KeptErrno kept;
    uint64_t permitted = 0;
    return syscall(SYS_arch_prctl, get_permission, &permitted) == 0 ? permitted & saved_tiles : 0;
}

struct KeptLeaf {
    uint32_t leaf;
    uint32_t subleaf;
    unsigned index; // in the C library
};

constexpr KeptLeaf kept_leaves[] = {
    {1, 0, CPUID_INDEX_1},
    {7, 0, CPUID_INDEX_7},
    {7, 1, CPUID_INDEX_7_ECX_1},
    {0xD, 1, CPUID_INDEX_D_ECX_1},
    {0x80000001, 0, CPUID_INDEX_80000001},
    {0x80000007, 0, CPUID_INDEX_80000007},
    {0x80000008, 0, CPUID_INDEX_80000008},
};

uint32_t kept_word(const FeatureWord &word) {
    for (const KeptLeaf &kept : kept_leaves)
        if (kept.leaf == word.leaf && kept.subleaf == word.subleaf)
            return __x86_get_cpuid_feature_leaf(kept.index)->cpuid_array[word.reg];
    return 0;
}

} // namespace

// Whether the system saves registers at all is asked of the C library: the features may be those of
// another processor, on which the instruction that reads XCR0 would end the program.
void read_saved_registers(kestu_cpu_features_t &features) {
    features.saved = features.permitted = 0;
    if (__x86_get_cpuid_feature_leaf(CPUID_INDEX_1)->cpuid_array[2] & bit_OSXSAVE)
        features.saved = features.permitted = read_xcr0();
    if (features.saved & saved_tiles)
        features.permitted = (features.saved & ~saved_tiles) | permitted_tiles();
}

// Asks the C library, which has asked the processor: a program that replays another one through
// kestu_cpu_cpuid_comm must not make the checksums use instructions that this one lacks.
kestu_cpu_features_t features_here() {
    kestu_cpu_features_t features = {};
    std::transform(std::begin(feature_words), std::end(feature_words), features.words, kept_word);
    read_saved_registers(features);
    return features;
}

CpuFeatures features_of(const kestu_cpu_features_t &answers) {
    const auto has = [&](int feature) {
        return kestu_cpu_feature_state(&answers, feature) == KESTU_CPU_USABLE;
    };
    CpuFeatures features;
    const bool baseline = has(KESTU_CPU_FEATURE_SSSE3) && has(KESTU_CPU_FEATURE_SSE4_1);
    features.avx2 = has(KESTU_CPU_FEATURE_AVX2);
    features.bytes512 = has(KESTU_CPU_FEATURE_AVX512BW);
    features.count512 = has(KESTU_CPU_FEATURE_AVX512_VPOPCNTDQ);
    features.clmul = baseline && has(KESTU_CPU_FEATURE_PCLMULQDQ);
    features.clmul256 = features.clmul && features.avx2 && has(KESTU_CPU_FEATURE_VPCLMULQDQ);
    features.clmul512 = features.clmul256 && has(KESTU_CPU_FEATURE_AVX512F);
    features.sha = baseline && has(KESTU_CPU_FEATURE_SHA_NI);
    return features;
}

CpuFeatures cpu_features() {
    return features_of(features_here());
}

} // namespace kestu

using namespace kestu;

// A feature is as far as the least of those that it builds on.
int kestu_cpu_feature_state(const kestu_cpu_features_t *features, int feature) {
    int state = KESTU_CPU_USABLE;
    const auto *info = kestu_cpu_feature_info(feature);
    while (info) {
        if (!(features->words[info->feature / 32] >> info->bit & 1))
            return info->feature == feature ? KESTU_CPU_ABSENT : KESTU_CPU_PRESENT;
        if (info->saved & ~features->saved)
            state = KESTU_CPU_PRESENT;
        else if (info->saved & ~features->permitted)
            state = std::min<int>(state, KESTU_CPU_ENABLED);
        if (info->needs == KESTU_CPU_FEATURE_NONE)
            return state;
        info = kestu_cpu_feature_info(info->needs);
    }
    return KESTU_CPU_ABSENT;
}

int kestu_cpu_feature_usable(int feature) {
    const kestu_cpu_features_t here = features_here();
    return kestu_cpu_feature_state(&here, feature) == KESTU_CPU_USABLE;
}
