// The table of features: the names, where each stands and what it builds on.
#include "kestu_cpu_features.h"

#include "base/cpu_feature_rows.hpp"
#include "base/cpu_features.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace kestu {
namespace {

constexpr int none = KESTU_CPU_FEATURE_NONE;

#define F(name) KESTU_CPU_FEATURE_##name

// What a feature builds on.
struct Need {
    int feature;
    int needed;
};

constexpr Need needs[] = {{F(FMA), F(AVX)},
                          {F(AVX), F(OSXSAVE)},
                          {F(F16C), F(AVX)},
                          {F(XOP), F(AVX)},
                          {F(FMA4), F(AVX)},
                          {F(AVX2), F(AVX)},
                          {F(AVX512F), F(AVX2)},
                          {F(AVX512DQ), F(AVX512F)},
                          {F(AVX512IFMA), F(AVX512F)},
                          {F(AVX512PF), F(AVX512F)},
                          {F(AVX512ER), F(AVX512F)},
                          {F(AVX512CD), F(AVX512F)},
                          {F(AVX512BW), F(AVX512F)},
                          {F(AVX512VL), F(AVX512F)},
                          {F(SHA512), F(AVX)},
                          {F(SM3), F(AVX)},
                          {F(SM4), F(AVX)},
                          {F(AVX_VNNI), F(AVX)},
                          {F(AVX512_BF16), F(AVX512F)},
                          {F(AMX_FP16), F(AMX_TILE)},
                          {F(AVX_IFMA), F(AVX)},
                          {F(AVX512VBMI), F(AVX512F)},
                          {F(OSPKE), F(PKU)},
                          {F(AVX512_VBMI2), F(AVX512F)},
                          {F(VAES), F(AVX)},
                          {F(VPCLMULQDQ), F(AVX)},
                          {F(AVX512_VNNI), F(AVX512F)},
                          {F(AVX512_BITALG), F(AVX512F)},
                          {F(AVX512_VPOPCNTDQ), F(AVX512F)},
                          {F(AVX512_4VNNIW), F(AVX512F)},
                          {F(AVX512_4FMAPS), F(AVX512F)},
                          {F(AVX512_VP2INTERSECT), F(AVX512F)},
                          {F(AMX_BF16), F(AMX_TILE)},
                          {F(AVX512_FP16), F(AVX512F)},
                          {F(AMX_TILE), F(OSXSAVE)},
                          {F(AMX_INT8), F(AMX_TILE)},
                          {F(AVX_VNNI_INT8), F(AVX)},
                          {F(AVX_NE_CONVERT), F(AVX)},
                          {F(AMX_COMPLEX), F(AMX_TILE)},
                          {F(AVX_VNNI_INT16), F(AVX)},
                          {F(AVX10), F(AVX512F)}};

// What /proc/cpuinfo does not list.
constexpr int unlisted[] = {F(OSXSAVE),
                            F(XFD),
                            F(SHA512),
                            F(SM3),
                            F(SM4),
                            F(CMPCCXADD),
                            F(FZRM),
                            F(FSRS),
                            F(FSRC),
                            F(FRED),
                            F(LKGS),
                            F(WRMSRNS),
                            F(AMX_FP16),

                            F(AVX_IFMA),
                            F(AMD_IBPB),
                            F(AMD_IBRS),
                            F(AMD_STIBP),
                            F(AMD_SSBD),
                            F(PREFETCHWT1),
                            F(SHSTK),

                            F(TS),
                            F(FID),
                            F(VID),
                            F(TTP),
                            F(HTC),
                            F(STC),
                            F(ACC_POWER),
                            F(UINTR),
                            F(RTM_ALWAYS_ABORT),
                            F(HYBRID),
                            F(CORE_CAPABILITIES),
                            F(AVX_VNNI_INT8),
                            F(AVX_NE_CONVERT),
                            F(AMX_COMPLEX),
                            F(AVX_VNNI_INT16),
                            F(PREFETCHI),
                            F(AVX10)};

constexpr int needed_by(int feature) {
    for (const auto &entry : needs)
        if (entry.feature == feature)
            return entry.needed;
    return none;
}

constexpr const char *flags_of(const FeatureRow &row) {
    if (std::find(std::begin(unlisted), std::end(unlisted), row.feature) != std::end(unlisted))
        return nullptr;
    switch (row.feature) {
    case F(SSE3):
        return "pni";
    case F(NONSTOP_TSC):
        return "constant_tsc nonstop_tsc";
    case F(SPEC_CTRL):
        return "ibrs ibpb";
    default:
        return row.name;
    }
}

// The registers that a feature takes beyond those of the one that it needs.
constexpr uint64_t saved_for(int feature) {
    switch (feature) {
    case F(AVX):
        return saved_256;
    case F(AVX512F):
        return saved_512;
    case F(AMX_TILE):
        return saved_tiles;
    case F(MPX):
        return 1 << 3 | 1 << 4;
    case F(PKU):
        return 1 << 9;
    default:
        return 0;
    }
}

#undef F

constexpr kestu_cpu_feature_info_t described(const FeatureRow &row) {
    const FeatureWord &word = feature_words[row.feature / 32];
    return {.name = row.name,
            .flags = flags_of(row),
            .feature = row.feature,
            .group = row.group,
            .needs = needed_by(row.feature),
            .leaf = word.leaf,
            .subleaf = word.subleaf,
            .reg = word.reg,
            .bit = row.feature % 32,
            .saved = saved_for(row.feature)};
}

constexpr auto table = [] {
    std::array<kestu_cpu_feature_info_t, std::size(feature_rows)> made = {};
    std::transform(std::begin(feature_rows), std::end(feature_rows), made.begin(), described);
    return made;
}();

constexpr bool comes_before(const kestu_cpu_feature_info_t &info, int feature) {
    return info.feature < feature;
}

// Each feature builds on one with a place of its own, so that every way down ends.
static_assert(std::is_sorted(table.begin(), table.end(),
                             [](const auto &a, const auto &b) { return a.feature < b.feature; }));

// The first with this number or a higher one.
constexpr const kestu_cpu_feature_info_t *at_least(int feature) {
    return std::lower_bound(table.begin(), table.end(), feature, comes_before);
}

} // namespace
} // namespace kestu

using namespace kestu;

const kestu_cpu_feature_info_t *kestu_cpu_feature_info(int feature) {
    const auto *found = at_least(feature);
    return found != table.end() && found->feature == feature ? found : nullptr;
}

int kestu_cpu_feature_find(const char *name) {
    for (const kestu_cpu_feature_info_t &info : table)
        if (std::strcmp(info.name, name) == 0)
            return info.feature;
    return none;
}

int kestu_cpu_feature_next(int feature) {
    if (feature == INT32_MAX)
        return none;
    const auto *found = at_least(feature + 1);
    return found == table.end() ? none : found->feature;
}
