// Names of features.
#include "cpu/cpu.hpp"

namespace program {
namespace {

using Id = kestu_cpu_id_t;

struct Feature {
    const char *name;
    bool (*is_there)(const Id &id);
};

#define LEAF1(flag) [](const Id &id) { return id.flags.flag != 0; }
#define AMD(flag) [](const Id &id) { return id.amd.flag != 0; }

constexpr Feature arithmetic[] = {
    {"FPU", LEAF1(fpu)},
    {"MMX", LEAF1(mmx)},
    {"MMXEXT", AMD(mmxext)},
    {"3DNOW", AMD(amd3dnow)},
    {"3DNOWEXT", AMD(amd3dnowext)},
    {"SSE", LEAF1(sse)},
    {"SSE2", LEAF1(sse2)},
    {"SSE3", LEAF1(sse3)},
    {"SSSE3", LEAF1(ssse3)},
    {"SSE4.1", LEAF1(sse41)},
    {"SSE4.2", LEAF1(sse42)},
    {"SSE4A", AMD(sse4a)},
    {"AVX", LEAF1(avx)},
    {"XOP", AMD(xop)},
};

constexpr Feature instructions[] = {
    {"TSC", LEAF1(tsc)},    {"MSR", LEAF1(msr)},
    {"CX8", LEAF1(cx8)},    {"SEP", LEAF1(sep)},
    {"CMOV", LEAF1(cmov)},  {"CLFSH", LEAF1(clfsh)},
    {"FXSR", LEAF1(fxsr)},  {"MONITOR", LEAF1(monitor)},
    {"IA-64", LEAF1(ia64)}, {"LM", [](const Id &id) { return id.intel.lm != 0 || id.amd.lm != 0; }},
};

constexpr Feature memory[] = {
    {"VME", LEAF1(vme)}, {"PSE", LEAF1(pse)}, {"PAE", LEAF1(pae)},      {"MTRR", LEAF1(mtrr)},
    {"PGE", LEAF1(pge)}, {"PAT", LEAF1(pat)}, {"PSE-36", LEAF1(pse36)}, {"NX", AMD(nx)},
};

constexpr Feature several_processors[] = {
    {"APIC", LEAF1(apic)},
    {"HTT", LEAF1(htt)},
    {"MP", AMD(mp)},
    {"SS", LEAF1(ss)},
};

constexpr Feature checks[] = {
    {"DE", LEAF1(de)},         {"MCE", LEAF1(mce)},         {"MCA", LEAF1(mca)}, {"DS", LEAF1(ds)},
    {"DS-CPL", LEAF1(ds_cpl)}, {"CNXT-ID", LEAF1(cnxt_id)}, {"PSN", LEAF1(psn)},
};

constexpr Feature power[] = {
    {"ACPI", LEAF1(acpi)}, {"TM", LEAF1(tm)}, {"TM2", LEAF1(tm2)}, {"EIST", LEAF1(eist)},
    {"PBE", LEAF1(pbe)},   {"TS", AMD(ts)},   {"FID", AMD(fid)},   {"VID", AMD(vid)},
    {"TTP", AMD(ttp)},     {"HTC", AMD(htc)}, {"STC", AMD(stc)},
};

#undef LEAF1
#undef AMD

struct Group {
    const char *name;
    std::span<const Feature> features;
};

constexpr Group groups[] = {
    {"Arithmetic", arithmetic}, {"Instructions", instructions},
    {"Memory", memory},         {"Several processors", several_processors},
    {"Checks", checks},         {"Power", power},
};

} // namespace

std::vector<FeatureGroup> features_of(const kestu_cpu_id_t &id) {
    std::vector<FeatureGroup> found;
    for (const Group &group : groups) {
        FeatureGroup &there = found.emplace_back(FeatureGroup{group.name, {}});
        for (const Feature &feature : group.features)
            if (feature.is_there(id))
                there.features.emplace_back(feature.name);
    }
    return found;
}

} // namespace program
