// Tables of flags: which bit fills which field.
#include "machine/cpu_flags.hpp"

#include <span>

namespace kestu {
namespace {

template <typename Record>
struct Flag {
    int32_t Record::*field;
    uint32_t bit;
    FlagSet set = FlagSet::common; // the smallest set that it belongs to
};

using Flags = kestu_cpu_flags_t;
using Amd = kestu_cpu_amd_t;

constexpr Flag<Flags> leaf1_ecx[] = {
    {&Flags::sse3, 0},
    {&Flags::monitor, 3, FlagSet::all},
    {&Flags::ds_cpl, 4, FlagSet::all},
    {&Flags::eist, 7, FlagSet::all},
    {&Flags::tm2, 8, FlagSet::all},
    {&Flags::ssse3, 9},
    {&Flags::cnxt_id, 10, FlagSet::all},
    {&Flags::sse41, 19},
    {&Flags::sse42, 20},
    {&Flags::avx, 28},
};

constexpr Flag<Flags> leaf1_edx[] = {
    {&Flags::fpu, 0},
    {&Flags::vme, 1},
    {&Flags::de, 2},
    {&Flags::pse, 3},
    {&Flags::tsc, 4},
    {&Flags::msr, 5},
    {&Flags::pae, 6},
    {&Flags::mce, 7},
    {&Flags::cx8, 8},
    {&Flags::apic, 9},
    {&Flags::sep, 11},
    {&Flags::mtrr, 12},
    {&Flags::pge, 13},
    {&Flags::mca, 14},
    {&Flags::cmov, 15},
    {&Flags::pat, 16},
    {&Flags::pse36, 17},
    {&Flags::psn, 18, FlagSet::all},
    {&Flags::clfsh, 19, FlagSet::all},
    {&Flags::ds, 21, FlagSet::all},
    {&Flags::acpi, 22, FlagSet::all},
    {&Flags::mmx, 23},
    {&Flags::fxsr, 24},
    {&Flags::sse, 25},
    {&Flags::sse2, 26},
    {&Flags::ss, 27, FlagSet::all},
    {&Flags::htt, 28},
    {&Flags::tm, 29, FlagSet::all},
    {&Flags::ia64, 30, FlagSet::all},
    {&Flags::pbe, 31, FlagSet::all},
};

constexpr Flag<Amd> ext1_ecx[] = {
    {&Amd::sse4a, 6},
    {&Amd::xop, 11},
};

constexpr Flag<Amd> ext1_edx[] = {
    {&Amd::edx18, 18},  {&Amd::mp, 19}, {&Amd::nx, 20},          {&Amd::edx21, 21},
    {&Amd::mmxext, 22}, {&Amd::lm, 29}, {&Amd::amd3dnowext, 30}, {&Amd::amd3dnow, 31},
};

constexpr Flag<Amd> ext7_edx[] = {
    {&Amd::ts, 0}, {&Amd::fid, 1}, {&Amd::vid, 2}, {&Amd::ttp, 3}, {&Amd::htc, 4}, {&Amd::stc, 5},
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
