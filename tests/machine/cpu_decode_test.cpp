// What the leaves of one processor mean, by the vendors' rules.
#include "machine/cpu_amd_names.hpp"
#include "machine/cpu_decode.hpp"
#include "machine/cpu_freq.hpp"
#include "machine/cpu_vendor.hpp"
#include "machine/replayed.hpp"
#include "support/chain.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <vector>

using namespace kestu;
using namespace kestu::test;
using testing::ElementsAreArray;

namespace {

constexpr uint32_t htt = 1u << 28;

Leaves leaves_of(const LeafTable &table) {
    constexpr auto read = [](const void *from, uint32_t leaf, uint32_t subleaf) {
        const auto found = static_cast<const LeafTable *>(from)->get(leaf, subleaf);
        return Leaf{found.eax, found.ebx, found.ecx, found.edx};
    };
    return {.read = read, .table = &table};
}

Processor decode(const Rules &rules, const LeafTable &table) {
    Processor processor = {};
    EXPECT_OK(rules.decode(leaves_of(table), processor));
    return processor;
}

std::string name_of(const Rules &rules, const LeafTable &table) {
    char name[80] = "(none)";
    rules.name(leaves_of(table), decode(rules, table).id, name);
    return name;
}

// A processor with leaves 0 and 1 and, from `highest_extended` on, without a brand text.
LeafTable plain(std::string_view vendor, uint32_t highest, const machines::Registers &leaf1,
                uint32_t highest_extended = 0) {
    LeafTable table;
    set_vendor(table, vendor, highest);
    table.set(1, 0, leaf1);
    table.set(0x80000000, 0, {highest_extended, 0, 0, 0});
    return table;
}

LeafTable intel(uint32_t highest, const machines::Registers &leaf1, uint32_t extended = 0) {
    return plain("GenuineIntel", highest, leaf1, extended);
}

LeafTable amd(const machines::Registers &leaf1, uint32_t extended) {
    return plain("AuthenticAMD", 1, leaf1, extended);
}

// The flags as the record holds them, one after the other.
std::vector<int32_t> in_order(const kestu_cpu_flags_t &flags) {
    std::vector<int32_t> values(sizeof flags / sizeof(int32_t));
    std::memcpy(values.data(), &flags, sizeof flags);
    return values;
}

std::string intel_name_of(uint32_t signature, uint32_t brand_index) {
    return name_of(intel_rules, intel(1, {signature, brand_index, 0, 0}, 0x80000003));
}

std::string amd_name_of(uint32_t signature, uint32_t brand_id) {
    LeafTable table = amd({signature, 0, 0, 0}, 0x80000003);
    table.set(0x80000001, 0, {0, brand_id, 0, 0});
    return name_of(amd_rules, table);
}

std::string amd_code(uint32_t code, int n) {
    char name[80] = "(none)";
    const bool named = amd_name_of_code(code, n, name);
    EXPECT_EQ(named, std::strcmp(name, "(none)") != 0);
    return name;
}

} // namespace

TEST(CpuVendor, IsKnownByTheWholeIdentification) {
    const std::pair<const char *, uint32_t> known[] = {
        {"GenuineIntel", 1}, {"AuthenticAMD", 2}, {"GenuineTMx86", 3}, {"TransmetaCPU", 3},
        {"SiS SiS SiS ", 4}, {"RiseRiseRise", 5}, {"CentaurHauls", 6}, {"NexGenDriven", 7},
        {"UMC UMC UMC ", 8}, {"CyrixInstead", 9}, {"Geode by NSC", 10}};
    for (const auto &[id, code] : known)
        EXPECT_EQ(find_vendor(id).code, code) << id;
    for (const char *id : {"genuineintel", "GenuineInte", "KVMKVMKVM", " SiS SiS SiS", ""})
        EXPECT_EQ(find_vendor(id).code, 0u) << id;
    EXPECT_STREQ(find_vendor("?").name, "Unknown");
    EXPECT_STREQ(find_vendor("?").processor, "Unknown Processor");
}

TEST(CpuFlags, EveryBitFillsItsOwnFieldAndNoOther) {
    const std::vector<int> ecx = {0, 3, 4, 7, 8, 9, 10, 19, 20, 28};
    const std::vector<int> edx = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  11, 12, 13, 14, 15,
                                  16, 17, 18, 19, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31};
    const std::vector<int> intel_ecx = {3, 4, 7, 8, 10};
    const std::vector<int> intel_edx = {18, 19, 21, 22, 27, 29, 30, 31};
    const auto has = [](const std::vector<int> &bits, int bit) {
        return std::find(bits.begin(), bits.end(), bit) != bits.end();
    };
    for (int bit = 0; bit < 32; ++bit) {
        const uint32_t word = 1u << bit;
        std::vector<int32_t> expected;
        for (const int b : ecx)
            expected.push_back(b == bit);
        expected.resize(ecx.size() + edx.size());
        EXPECT_THAT(in_order(decode(intel_rules, intel(1, {0, 0, word, 0})).id.flags),
                    ElementsAreArray(expected));
        if (has(intel_ecx, bit))
            expected.assign(expected.size(), 0);
        EXPECT_THAT(in_order(decode(amd_rules, amd({0, 0, word, 0}, 0)).id.flags),
                    ElementsAreArray(expected));
        expected.assign(ecx.size(), 0);
        for (const int b : edx)
            expected.push_back(b == bit);
        EXPECT_THAT(in_order(decode(intel_rules, intel(1, {0, 1u << 16, 0, word})).id.flags),
                    ElementsAreArray(expected));
        if (has(intel_edx, bit))
            expected.assign(expected.size(), 0);
        EXPECT_THAT(in_order(decode(amd_rules, amd({0, 0, 0, word}, 0)).id.flags),
                    ElementsAreArray(expected));
    }
}

TEST(CpuIdentity, TheSignatureIsSplitForBothVendors) {
    for (const Rules *rules : {&intel_rules, &amd_rules}) {
        const kestu_cpu_id_t id =
            decode(*rules, plain("", 1, {0x1A5B2C3D, 0x12345678, 0, 0}, 0x80000000)).id;
        EXPECT_EQ(id.signature, 0x1A5B2C3Du);
        EXPECT_EQ(id.stepping, 0xDu);
        EXPECT_EQ(id.model, 0x3u);
        EXPECT_EQ(id.family, 0xCu);
        EXPECT_EQ(id.type, 0x2u);
        EXPECT_EQ(id.extended_model, 0xBu);
        EXPECT_EQ(id.extended_family, 0xA5u);
        EXPECT_EQ(id.display_family, 0xCu + 0xA5u);
        EXPECT_EQ(id.display_model, 0xB3u);
        EXPECT_EQ(id.brand_index, 0x78u);
        EXPECT_EQ(id.logical_processors, 0x34u);
        EXPECT_EQ(id.initial_apic_id, 0x12u);
        EXPECT_EQ(id.highest_leaf, 1u);
        EXPECT_EQ(id.highest_extended_leaf, 0x80000000u);
    }
}

TEST(CpuIdentity, AmdsExtendedLeavesAreReadUpToTheHighest) {
    LeafTable table = amd({0, 0, 0, 0}, 0x8000000A);
    table.set(0x80000001, 0, {0, 0xFFFFFABC, 1u << 6, 1u << 20 | 1u << 29 | 1u << 18});
    table.set(0x80000005, 0, {0, 0, 0x40020140, 0x20080140});
    table.set(0x80000006, 0, {0, 0, 0x02008140, 0x0010A140});
    table.set(0x80000007, 0, {0, 0, 0, 0x2A});
    table.set(0x80000008, 0, {0x3030, 0, 0x5007, 0});
    table.set(0x8000000A, 0, {7, 0x8000, 0, 0});
    const kestu_cpu_amd_t known = decode(amd_rules, table).id.amd;
    EXPECT_EQ(known.brand_id, 0xABCu);
    EXPECT_EQ(known.sse4a + known.nx + known.lm + known.edx18, 4);
    EXPECT_EQ(known.xop + known.mp + known.edx21 + known.mmxext, 0);
    EXPECT_EQ(known.amd3dnow + known.amd3dnowext, 0);
    EXPECT_EQ(known.l1_data, 0x40020140u);
    EXPECT_EQ(known.l1_instruction, 0x20080140u);
    EXPECT_EQ(known.l2_kb, 512u);
    EXPECT_EQ(known.l3_kb, 2048u);
    EXPECT_EQ(known.fid + known.ttp + known.stc, 3);
    EXPECT_EQ(known.ts + known.vid + known.htc, 0);
    EXPECT_EQ(known.physical_bits, 48u);
    EXPECT_EQ(known.linear_bits, 48u);
    EXPECT_EQ(known.cores_minus_one, 7u);
    EXPECT_EQ(known.apic_core_bits, 5u);
    EXPECT_EQ(known.svm_revision, 7u);
    EXPECT_EQ(known.svm_asids, 0x8000u);
    table.set(0x80000000, 0, {0x80000005, 0, 0, 0});
    const kestu_cpu_amd_t fewer = decode(amd_rules, table).id.amd;
    EXPECT_EQ(fewer.l1_data, 0x40020140u);
    EXPECT_EQ(fewer.l2_kb + fewer.physical_bits + fewer.svm_revision, 0u);
}

TEST(CpuIdentity, IntelsFirmwareMayRestrictTheLeaves) {
    const auto restricted = [](uint32_t highest, uint32_t extended, uint32_t signature) {
        return decode(intel_rules, intel(highest, {signature, 0, 0, 0}, extended))
            .id.intel.restricted;
    };
    EXPECT_EQ(restricted(3, 0x80000008, 0xF43), 1);
    EXPECT_EQ(restricted(5, 0x80000008, 0xF43), 0);
    EXPECT_EQ(restricted(3, 0x80000004, 0xF43), 0);
    EXPECT_EQ(restricted(2, 0x80000008, 0x1065A), 0) << "a processor that has no more leaves";
    EXPECT_EQ(restricted(2, 0x80000008, 0xF001065A), 0);
    LeafTable table = intel(3, {0xF43, 0x20000, 0, htt}, 0x80000008);
    Processor processor = {};
    EXPECT_CHAIN(intel_rules.decode(leaves_of(table), processor),
                 Element(120172, "Error in Intel CPUID processing."), Element(120172, ""));
}

TEST(CpuNames, IntelsBrandIndexDependsOnTheSignature) {
    const struct {
        uint32_t index;
        uint32_t signature;
        const char *name;
    } cases[] = {
        {1, 0x673, "Intel(R) Celeron(R) processor"},
        {2, 0x673, "Intel(R) Pentium(R) III processor"},
        {3, 0x6B1, "Intel(R) Celeron(R) processor"},
        {3, 0x6B4, "Intel(R) Pentium(R) III Xeon(TM) processor"},
        {6, 0x6B1, "Mobile Intel(R) Pentium(R) III Processor-M"},
        {8, 0xF12, "Intel(R) Pentium(R) 4 processor"},
        {8, 0xF13, "Intel(R) Genuine processor"},
        {9, 0xF13, "Intel(R) Pentium(R) 4 processor"},
        {11, 0xF12, "Intel(R) Xeon(TM) processor MP"},
        {11, 0xF13, "Intel(R) Xeon(TM) processor"},
        {12, 0xF13, "Intel(R) Xeon(TM) Processor MP"},
        {14, 0xF12, "Intel(R) Xeon(TM) processor"},
        {14, 0xF13, "Mobile Intel(R) Pentium(R) 4 Processor-M"},
        {18, 0x695, "Intel(R) Celeron(R) M processor"},
        {21, 0x695, "Mobile Genuine Intel(R) processor"},
        {22, 0x695, "Intel(R) Pentium(R) M processor"},
        {23, 0x695, "Mobile Intel(R) Celeron(R) processor"},
        {24, 0x695, "Intel Pentium(R) M processor"},
        {5, 0x695, "(none)"},
        {13, 0x695, "(none)"},
        {16, 0x695, "(none)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(intel_name_of(c.signature, c.index), c.name) << c.index;
}

TEST(CpuNames, IntelsFamilyAndModelNameTheOldest) {
    const std::pair<uint32_t, const char *> cases[] = {
        {0x400, "Intel486(TM) DX processor"},
        {0x41F, "Intel486(TM) DX processor"},
        {0x42F, "Intel486(TM) SX processor"},
        {0x434, "IntelDX2(TM) processor"},
        {0x440, "Intel486(TM) processor"},
        {0x450, "IntelSX2(TM) processor"},
        {0x460, "Intel486(TM) processor"},
        {0x470, "IntelDX2WB processor"},
        {0x480, "IntelDX4(TM) processor"},
        {0x4F0, "Intel486(TM) processor"},
        {0x532, "Intel Pentium(R) OverDrive processor"},
        {0x543, "Intel Pentium(R) processor with MMX(TM) technology"},
        {0x52C, "Intel Pentium(R) processor"},
        {0x619, "Intel Pentium(R) Pro processor"},
        {0x634, "Intel Pentium(R) II processor"},
        {0x66A, "Intel Celeron processor"},
        {0x673, "(none)"},
        {0x6A1, "Intel Pentium(R) III Xeon processor"},
        {0x6B1, "Intel Pentium(R) III processor"},
        {0x6D8, "Intel Pentium(R) M processor"},
        {0xF43, "(none)"},
        {0x000, "(none)"},
    };
    for (const auto &[signature, name] : cases)
        EXPECT_EQ(intel_name_of(signature, 0), name) << std::hex << signature;
}

TEST(CpuNames, ABrandTextComesAsItIs) {
    const std::string full(48, 'x');
    for (const std::string &brand : {std::string("  Intel(R)  Core "), full, std::string()}) {
        LeafTable table = intel(1, {0x6B1, 3, 0, 0});
        set_brand(table, brand);
        EXPECT_EQ(name_of(intel_rules, table), brand);
        EXPECT_EQ(name_of(amd_rules, table), brand);
    }
}

TEST(CpuNames, AmdsIdentifiersChooseACodeWithoutAShift) {
    EXPECT_EQ(amd_name_of(0x62A, 0), "AMD Athlon(tm) XP Processor 3200+");
    EXPECT_EQ(amd_name_of(0x600, 0x02A), "AMD Athlon(tm) XP Processor 6400+");
    EXPECT_EQ(amd_name_of(0x62A, 0x02A), "(none)") << "both are there";
    EXPECT_EQ(amd_name_of(0x600, 0), "(none)");
    EXPECT_EQ(amd_name_of(0x60A, 0), "(none)") << "code 0";
    EXPECT_EQ(amd_name_of(0x64A, 0), "(none)") << "code 64";
}

TEST(CpuNames, AmdsTableIsWhole) {
    EXPECT_EQ(amd_code(4, 10), "AMD Athlon(tm) 64 Processor 3200+");
    EXPECT_EQ(amd_code(24, 10), "AMD Athlon(tm) 64 Processor 1900+");
    EXPECT_EQ(amd_code(12, 2), "AMD Opteron(tm) Processor 142");
    EXPECT_EQ(amd_code(33, 6), "Mobile AMD Sempron(tm) Processor 3000+");
    EXPECT_EQ(amd_code(41, 4), "Dual Core AMD Opteron(tm) Processor 165 SE");
    EXPECT_EQ(amd_code(47, 4), "Dual Core AMD Opteron(tm) Processor 165 13");
    EXPECT_EQ(amd_code(55, 4), "Dual Core AMD Opteron(tm) Processor 865 13");
    EXPECT_EQ(amd_code(58, 4), "Dual Core AMD Opteron(tm) Processor 865");
    std::vector<uint32_t> without;
    for (uint32_t code = 0; code < 70; ++code)
        if (amd_code(code, 1) == "(none)")
            without.push_back(code);
    EXPECT_THAT(without, testing::ElementsAre(0, 1, 2, 3, 6, 7, 25, 26, 27, 28, 31, 37, 39, 40, 59,
                                              60, 61, 62, 63, 64, 65, 66, 67, 68, 69));
}

TEST(CpuSplit, LevelsOfLeafBMayComeInAnyOrderAndNumber) {
    LeafTable table = intel(0xB, {0x106A1, 0x100000, 0, htt});
    table.set(0xB, 0, {5, 8, 0x200, 77});
    table.set(0xB, 1, {9, 1, 0x501, 77});
    table.set(0xB, 2, {0xFFFFFFE1, 2, 0x102, 77});
    table.set(0xB, 4, {3, 2, 0x104, 77});
    const kestu_cpu_id_t id = decode(intel_rules, table).id;
    EXPECT_EQ(id.initial_apic_id, 77u);
    EXPECT_EQ(id.split.thread_width, 1u) << "what stands behind the end is not read";
    EXPECT_EQ(id.split.thread_mask, 1u);
    EXPECT_EQ(id.split.core_mask, 0x1Eu);
    EXPECT_EQ(id.split.core_and_thread_width, 5u);
    EXPECT_EQ(id.split.package_mask, 0xFFFFFFE0u);
    table.set(0xB, 0, {5, 8, 0, 77});
    const kestu_cpu_split_t threads_only = decode(intel_rules, table).id.split;
    EXPECT_EQ(threads_only.core_mask, 0u);
    EXPECT_EQ(threads_only.core_and_thread_width, 1u);
    EXPECT_EQ(threads_only.package_mask, 0xFFFFFFFEu);
}

TEST(CpuSplit, CountsThatContradictEachOtherKeepTheirArithmetic) {
    // One logical processor in four cores makes none in each: 31 ones, and a width of 63.
    LeafTable table = intel(4, {0x6F6, 0x10000, 0, htt});
    table.set(4, 0, {3u << 26, 0, 0, 0});
    const kestu_cpu_split_t split = decode(intel_rules, table).id.split;
    EXPECT_EQ(split.thread_width, 63u);
    EXPECT_EQ(split.thread_mask, 0x7FFFFFFFu);
    EXPECT_EQ(split.core_mask, 0x80000000u);
    EXPECT_EQ(split.core_and_thread_width, 65u);
    EXPECT_EQ(split.package_mask, 0u);
}

TEST(CpuSplit, WithoutHttThePackageIsAll) {
    const kestu_cpu_split_t split = decode(intel_rules, intel(1, {0x673, 0x40000, 0, 0})).id.split;
    EXPECT_EQ(split.thread_mask | split.core_mask, 0u);
    EXPECT_EQ(split.package_mask, 0xFFFFFFFFu);
}

TEST(CpuCaches, UndefinedTypesAreNamedSo) {
    LeafTable table = intel(4, {});
    table.set(4, 0, {2u << 5 | 4, 0x01C0003F, 63, 0});
    table.set(4, 1, {3u << 5 | 5, 0x01C0003F, 63, 0});
    table.set(4, 2, {3u << 5 | 31, 0x01C0003F, 63, 0});
    const Processor processor = decode(intel_rules, table);
    ASSERT_EQ(processor.cache_count, 3u);
    const std::pair<const char *, const char *> texts[] = {
        {"L2", "Level 2 cache type undefined, size(KBytes)= 32"},
        {"", "Level 3 cache type undefined, size(KBytes)= 32"},
        {"", "Level 3 cache type undefined, size(KBytes)= 32"}};
    for (int i = 0; i < 3; ++i) {
        kestu_cpu_cache_t stored;
        store_cache(processor.caches[i], stored);
        EXPECT_STREQ(stored.label, texts[i].first);
        EXPECT_STREQ(stored.description, texts[i].second);
    }
}

TEST(CpuCaches, AmdsDescriptorsLeaveOutWhatIsOff) {
    LeafTable table = amd({0, 0x30000, 0, htt}, 0x80000008);
    table.set(0x80000005, 0, {0, 0, 0x40FF0140, 0});
    table.set(0x80000006, 0, {0, 0, 0x0200F040, 0xFFFC9040});
    table.set(0x80000008, 0, {0, 0, 2, 0});
    const Processor processor = decode(amd_rules, table);
    ASSERT_EQ(processor.cache_count, 3u);
    EXPECT_EQ(processor.caches[0], (Cache{1, 1, 64, 64, 1024, 1, 1, 1})) << "fully associative";
    EXPECT_EQ(processor.caches[1], (Cache{2, 3, 512, 64, 8192, 1, 1, 1}));
    EXPECT_EQ(processor.caches[2], (Cache{3, 3, 16383 * 512, 64, 0, 1, 0, 3}))
        << "the ways stand in a leaf that is not there";
}

TEST(CpuCaches, EndlessLevelsAreCutOff) {
    const auto always = [](const void *, uint32_t, uint32_t) {
        return Leaf{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
    };
    for (const Rules *rules : {&intel_rules, &amd_rules}) {
        Processor processor = {};
        kestu_error_clear(rules->decode({.read = always, .table = nullptr}, processor));
        EXPECT_LE(processor.cache_count, uint32_t{KESTU_CPU_MAX_CACHES});
    }
}

namespace {

// A counter whose rounds take what a test says.
struct Round {
    uint32_t ticks;
    double seconds;
};
std::vector<Round> rounds;
size_t sleeps;
uint32_t ticks_now;
double seconds_now;

double rate_of(std::vector<Round> taken, uint32_t first_tick = 0) {
    rounds = std::move(taken);
    sleeps = 0;
    ticks_now = first_tick;
    seconds_now = 1000.0;
    return measure_rate({.ticks = [] { return ticks_now; },
                         .seconds = [] { return seconds_now; },
                         .sleep =
                             [](int64_t microseconds) {
                                 EXPECT_EQ(microseconds, 10000);
                                 const Round &round =
                                     rounds.at(std::min(sleeps, rounds.size() - 1));
                                 ticks_now += round.ticks;
                                 seconds_now += round.seconds;
                                 ++sleeps;
                             }});
}

} // namespace

TEST(CpuRate, TwoRoundsThatAgreeEndTheMeasurement) {
    EXPECT_NEAR(rate_of({{20000, 0.01}, {21000, 0.01}}), 2.1, 1e-6);
    EXPECT_EQ(sleeps, 2u);
    EXPECT_NEAR(rate_of({{10000, 0.01}, {20000, 0.01}, {30000, 0.01}, {30100, 0.01}}), 3.01, 1e-6);
    EXPECT_EQ(sleeps, 4u);
}

TEST(CpuRate, TenRoundsAreTheMost) {
    std::vector<Round> growing;
    for (uint32_t i = 0; i < 20; ++i)
        growing.push_back({10000u << i, 0.01});
    EXPECT_NEAR(rate_of(growing), 512.0, 1e-3);
    EXPECT_EQ(sleeps, 10u);
}

TEST(CpuRate, AWrapIsReplacedByTheNextRound) {
    EXPECT_NEAR(rate_of({{20000, 0.01}}, 0xFFFFFFFF), 2.0, 1e-6);
    EXPECT_EQ(sleeps, 3u) << "the wrap, and two that agree";
}

TEST(CpuRate, AClockThatStandsOrRunsBackAgreesWithNothing) {
    rate_of({{20000, 0.0}});
    EXPECT_EQ(sleeps, 10u);
    EXPECT_NEAR(rate_of({{20000, -1.0}, {20000, 0.01}}), 2.0, 1e-6);
    EXPECT_EQ(sleeps, 3u);
}
