// What the leaves of one processor mean, by the vendors' rules.
#include "machine/cpu_amd_names.hpp"
#include "machine/cpu_decode.hpp"
#include "machine/cpu_vendor.hpp"
#include "machine/replayed.hpp"
#include "support/test.hpp"

using namespace kestu;
using namespace kestu::test;

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

// Width and mask of threads, width of threads and cores, mask of cores, mask of packages.
std::vector<uint32_t> split_of(const LeafTable &table) {
    const kestu_cpu_split_t split = decode(intel_rules, table).id.split;
    return {split.thread_width, split.thread_mask, split.core_and_thread_width, split.core_mask,
            split.package_mask};
}

// The flags as the record holds them, one after the other.
std::vector<int32_t> in_order(const kestu_cpu_flags_t &flags) {
    std::vector<int32_t> values(sizeof flags / sizeof(int32_t));
    std::memcpy(values.data(), &flags, sizeof flags);
    return values;
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

// Beside those of recorded machines.
TEST(CpuVendor, IsKnownByTheWholeIdentification) {
    const std::pair<const char *, uint32_t> known[] = {
        {"GenuineTMx86", 3}, {"SiS SiS SiS ", 4}, {"RiseRiseRise", 5},
        {"NexGenDriven", 7}, {"UMC UMC UMC ", 8}, {"Geode by NSC", 10},
        {"genuineintel", 0}, {"GenuineInte", 0},  {" SiS SiS SiS", 0}};
    for (const auto &[id, code] : known)
        EXPECT_EQ(find_vendor(id).code, code) << id;
}

TEST(CpuFlags, EveryBitFillsItsOwnFieldAndNoOther) {
    const std::vector<int> bits = {0,  3,  4,  7,  8,  9,  10, 19, 20, 28, 32, 33, 34, 35,
                                   36, 37, 38, 39, 40, 41, 43, 44, 45, 46, 47, 48, 49, 50,
                                   51, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};
    const std::set<int> intel_only = {3, 4, 7, 8, 10, 50, 51, 53, 54, 59, 61, 62, 63};
    for (int bit = 0; bit < 64; ++bit) {
        const uint32_t ecx = bit < 32 ? 1u << bit : 0, edx = bit < 32 ? 0 : 1u << (bit - 32);
        std::vector<int32_t> expected;
        for (const int b : bits)
            expected.push_back(b == bit);
        EXPECT_EQ(in_order(decode(intel_rules, intel(1, {0, 1u << 16, ecx, edx})).id.flags),
                  expected);
        if (intel_only.count(bit))
            expected.assign(expected.size(), 0);
        EXPECT_EQ(in_order(decode(amd_rules, amd({0, 0, ecx, edx}, 0)).id.flags), expected);
    }
}

TEST(CpuIdentity, TheSignatureIsSplitForBothVendors) {
    for (const Rules *rules : {&intel_rules, &amd_rules}) {
        const kestu_cpu_id_t id =
            decode(*rules, plain("", 1, {0x1A5B2C3D, 0x12345678, 0, 0}, 0x80000000)).id;
        EXPECT_THAT((std::vector{id.signature, id.stepping, id.model, id.family, id.type,
                                 id.extended_model, id.extended_family, id.display_family,
                                 id.display_model, id.brand_index, id.logical_processors,
                                 id.initial_apic_id, id.highest_leaf, id.highest_extended_leaf}),
                    ElementsAre(0x1A5B2C3D, 0xD, 0x3, 0xC, 0x2, 0xB, 0xA5, 0xC + 0xA5, 0xB3, 0x78,
                                0x34, 0x12, 1, 0x80000000));
    }
}

TEST(CpuIdentity, AmdsExtendedLeavesAreReadUpToTheHighest) {
    LeafTable table = amd({0, 0, 0, 0}, 0x8000000A);
    table.set(0x80000001, 0, {0, 0xFFFFFABC, 1u << 6, 1u << 20 | 1u << 29 | 1u << 18});
    table.set(0x80000005, 0, {0, 0, 0x40020140, 0x20080140});
    table.set(0x80000006, 0, {0, 0, 0x02008140, 0x0010A140});
    table.set(0x80000007, 0, {0, 0, 0, 0x2A});
    table.set(0x80000008, 0, {0x3130, 0, 0x5007, 0});
    table.set(0x8000000A, 0, {7, 0x8000, 0, 0});
    const kestu_cpu_amd_t known = decode(amd_rules, table).id.amd;
    EXPECT_THAT((std::vector{known.sse4a, known.nx, known.lm, known.edx18, known.fid, known.ttp,
                             known.stc}),
                testing::Each(1));
    EXPECT_THAT((std::vector{known.xop, known.mp, known.edx21, known.mmxext, known.amd3dnow,
                             known.amd3dnowext, known.ts, known.vid, known.htc}),
                testing::Each(0));
    EXPECT_THAT(
        (std::vector{known.brand_id, known.l1_data, known.l1_instruction, known.l2_kb, known.l3_kb,
                     known.physical_bits, known.linear_bits, known.cores_minus_one,
                     known.apic_core_bits, known.svm_revision, known.svm_asids}),
        ElementsAre(0xABC, 0x40020140, 0x20080140, 512, 2048, 48, 49, 7, 5, 7, 0x8000));
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
}

TEST(CpuNames, IntelsBrandIndexAndTheSignatureNameTheOldest) {
    const struct {
        uint32_t index, signature;
        const char *name;
    } cases[] = {
        {3, 0x6B1, "Intel(R) Celeron(R) processor"},
        {3, 0x6B4, "Intel(R) Pentium(R) III Xeon(TM) processor"},
        {8, 0xF12, "Intel(R) Pentium(R) 4 processor"},
        {8, 0xF13, "Intel(R) Genuine processor"},
        {14, 0xF12, "Intel(R) Xeon(TM) processor"},
        {14, 0xF13, "Mobile Intel(R) Pentium(R) 4 Processor-M"},
        {24, 0x695, "Intel Pentium(R) M processor"},
        {5, 0x695, "(none)"},
        {0, 0x434, "IntelDX2(TM) processor"},
        {0, 0x460, "Intel486(TM) processor"},
        {0, 0x532, "Intel Pentium(R) OverDrive processor"},
        {0, 0x543, "Intel Pentium(R) processor with MMX(TM) technology"},
        {0, 0x52C, "Intel Pentium(R) processor"},
        {0, 0x619, "Intel Pentium(R) Pro processor"},
        {0, 0x66A, "Intel Celeron processor"},
        {0, 0x673, "(none)"},
        {0, 0x6D8, "Intel Pentium(R) M processor"},
        {0, 0xF43, "(none)"},
        {0, 0x000, "(none)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(name_of(intel_rules, intel(1, {c.signature, c.index, 0, 0}, 0x80000003)), c.name)
            << c.index << ", " << std::hex << c.signature;
}

TEST(CpuNames, ABrandTextComesAsItIs) {
    for (const std::string &brand : {std::string(48, 'x'), std::string()}) {
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
    EXPECT_EQ(amd_code(41, 4), "Dual Core AMD Opteron(tm) Processor 165 SE");
    EXPECT_EQ(amd_code(55, 4), "Dual Core AMD Opteron(tm) Processor 865 13");
    EXPECT_EQ(amd_code(58, 4), "Dual Core AMD Opteron(tm) Processor 865");
    std::vector<uint32_t> without;
    for (uint32_t code = 0; code < 70; ++code)
        if (amd_code(code, 1) == "(none)")
            without.push_back(code);
    EXPECT_THAT(without, ElementsAre(0, 1, 2, 3, 6, 7, 25, 26, 27, 28, 31, 37, 39, 40, 59, 60, 61,
                                     62, 63, 64, 65, 66, 67, 68, 69));
}

TEST(CpuSplit, LevelsOfLeafBMayComeInAnyOrderAndNumber) {
    LeafTable table = intel(0xB, {0x106A1, 0x100000, 0, htt});
    table.set(0xB, 0, {5, 8, 0x200, 77});
    table.set(0xB, 1, {9, 1, 0x501, 77});
    table.set(0xB, 2, {0xFFFFFFE1, 2, 0x102, 77});
    table.set(0xB, 4, {3, 2, 0x104, 77}); // behind the end
    EXPECT_THAT(split_of(table), ElementsAre(1, 1, 5, 0x1E, 0xFFFFFFE0));
    table.set(0xB, 0, {5, 8, 0, 77}); // threads alone
    EXPECT_THAT(split_of(table), ElementsAre(1, 1, 1, 0, 0xFFFFFFFE));
}

TEST(CpuSplit, CountsThatContradictEachOtherKeepTheirArithmetic) {
    // One logical processor in four cores makes none in each: 31 ones, and a width of 63.
    LeafTable table = intel(4, {0x6F6, 0x10000, 0, htt});
    table.set(4, 0, {3u << 26, 0, 0, 0});
    EXPECT_THAT(split_of(table), ElementsAre(63, 0x7FFFFFFF, 65, 0x80000000, 0));
}

TEST(CpuCaches, UndefinedTypesAreNamedSo) {
    LeafTable table = intel(4, {});
    table.set(4, 0, {2u << 5 | 4, 0x01C0003F, 63, 0});
    table.set(4, 1, {3u << 5 | 31, 0x01C0003F, 63, 0});
    const Processor processor = decode(intel_rules, table);
    ASSERT_EQ(processor.cache_count, 2u);
    const std::pair<const char *, const char *> texts[] = {
        {"L2", "Level 2 cache type undefined, size(KBytes)= 32"},
        {"", "Level 3 cache type undefined, size(KBytes)= 32"}};
    for (int i = 0; i < 2; ++i) {
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
