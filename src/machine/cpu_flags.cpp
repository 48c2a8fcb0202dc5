// Tables of flags: which bit fills which field.
#include "machine/cpu_flags.hpp"

#include <span>

namespace kestu {
namespace {

template <typename Record>
struct Flag {
    uint32_t bit;
    int32_t Record::*field;
    FlagSet set = FlagSet::common; // the smallest set that it belongs to
};

using Flags = kestu_cpu_flags_t;
using Amd = kestu_cpu_amd_t;

constexpr Flag<Flags> leaf1_ecx[] = {
    {0, &Flags::sse3},
    {3, &Flags::monitor, FlagSet::all},
    {4, &Flags::ds_cpl, FlagSet::all},
    {7, &Flags::eist, FlagSet::all},
    {8, &Flags::tm2, FlagSet::all},
    {9, &Flags::ssse3},
    {10, &Flags::cnxt_id, FlagSet::all},
    {19, &Flags::sse41},
    {20, &Flags::sse42},
    {28, &Flags::avx},
};

constexpr Flag<Flags> leaf1_edx[] = {
    {0, &Flags::fpu},
    {1, &Flags::vme},
    {2, &Flags::de},
    {3, &Flags::pse},
    {4, &Flags::tsc},
    {5, &Flags::msr},
    {6, &Flags::pae},
    {7, &Flags::mce},
    {8, &Flags::cx8},
    {9, &Flags::apic},
    {11, &Flags::sep},
    {12, &Flags::mtrr},
    {13, &Flags::pge},
    {14, &Flags::mca},
    {15, &Flags::cmov},
    {16, &Flags::pat},
    {17, &Flags::pse36},
    {18, &Flags::psn, FlagSet::all},
    {19, &Flags::clfsh, FlagSet::all},
    {21, &Flags::ds, FlagSet::all},
    {22, &Flags::acpi, FlagSet::all},
    {23, &Flags::mmx},
    {24, &Flags::fxsr},
    {25, &Flags::sse},
    {26, &Flags::sse2},
    {27, &Flags::ss, FlagSet::all},
    {28, &Flags::htt},
    {29, &Flags::tm, FlagSet::all},
    {30, &Flags::ia64, FlagSet::all},
    {31, &Flags::pbe, FlagSet::all},
};

constexpr Flag<Amd> ext1_ecx[] = {
    {6, &Amd::sse4a},
    {11, &Amd::xop},
};

constexpr Flag<Amd> ext1_edx[] = {
    {18, &Amd::edx18},  {19, &Amd::mp}, {20, &Amd::nx},          {21, &Amd::edx21},
    {22, &Amd::mmxext}, {29, &Amd::lm}, {30, &Amd::amd3dnowext}, {31, &Amd::amd3dnow},
};

constexpr Flag<Amd> ext7_edx[] = {
    {0, &Amd::ts}, {1, &Amd::fid}, {2, &Amd::vid}, {3, &Amd::ttp}, {4, &Amd::htc}, {5, &Amd::stc},
};

template <typename Record>
void decode(std::span<const Flag<Record>> table, uint32_t word, FlagSet set, Record &record) {
    for (const Flag<Record> &flag : table)
        if (flag.set <= set)
            record.*flag.field = kestu_cpu_check_flag(flag.bit, word);
}

} // namespace

void decode_flags(const Leaf &leaf1, FlagSet set, kestu_cpu_flags_t &flags) {
    decode<Flags>(leaf1_ecx, leaf1.ecx, set, flags);
    decode<Flags>(leaf1_edx, leaf1.edx, set, flags);
}

void decode_amd_flags(const Leaf &ext1, kestu_cpu_amd_t &amd) {
    decode<Amd>(ext1_ecx, ext1.ecx, FlagSet::common, amd);
    decode<Amd>(ext1_edx, ext1.edx, FlagSet::common, amd);
}

void decode_amd_power_flags(const Leaf &ext7, kestu_cpu_amd_t &amd) {
    decode<Amd>(ext7_edx, ext7.edx, FlagSet::common, amd);
}

} // namespace kestu
