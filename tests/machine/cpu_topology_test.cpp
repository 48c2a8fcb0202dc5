// Whole machines, replayed: what detection makes of the leaves of all their processors.
#include "machine/replayed.hpp"
#include "machines/replay.hpp"
#include "support/test.hpp"

#include <sstream>

using namespace kestu::test;
using machines::Replay;

namespace {

std::string summary(const kestu_cpu_t &cpu) {
    std::ostringstream text;
    text << cpu.package_count << '/' << cpu.core_count << '/' << cpu.thread_count;
    for (uint32_t i = 0; i < cpu.cache_count; ++i) {
        const kestu_cpu_cache_t &cache = cpu.caches[i];
        text << ' ' << cache.count << 'x' << cache.label << ':' << cache.size_kb << '/'
             << cache.line << '/' << cache.ways << '/' << cache.sets << '@' << cache.shared_by;
    }
    return text.str();
}

// The places of a machine: "identifier:package.core.thread" of each processor.
std::string places(const kestu_cpu_t &cpu) {
    std::ostringstream all;
    for (uint32_t i = 0; i < cpu.thread_count; ++i)
        all << cpu.processors[i].apic_id << ':' << cpu.processors[i].package << '.'
            << cpu.processors[i].core << '.' << cpu.processors[i].thread << ' ';
    return all.str();
}

kestu_error_t *detect(const RecordedMachine &machine, kestu_cpu_t &cpu) {
    const Replay replay(machine);
    return kestu_cpu_detect(&cpu, kestu_pool);
}

// Machines whose processors tell no brand of their own are named in the tests of names.
struct Case {
    const char *machine;
    uint32_t vendor;
    const char *name;
    const char *summary; // packages/cores/threads, and count x label:KB/line/ways/sets@sharing
};

constexpr Case cases[] = {
    {"intel-486-dx4", 1, "IntelDX4(TM) processor", "1/1/1"},
    {"intel-pentium3-pair", 1, "Intel(R) Pentium(R) III processor", "2/2/2"},
    {"intel-pentium4-hyperthreading", 1, "              Intel(R) Pentium(R) 4 CPU 3.00GHz",
     "1/1/2"},
    {"intel-core2-quad", 1, "Intel(R) Core(TM)2 Quad CPU    Q6600  @ 2.40GHz",
     "1/4/4 4xL1d:32/64/8/64@1 4xL1i:32/64/8/64@1 2xL2:4096/64/16/4096@2"},
    {"intel-xeon-two-packages", 1, "Intel(R) Xeon(R) CPU           X5650  @ 2.67GHz",
     "2/4/8 4xL1d:32/64/8/64@2 4xL1i:32/64/4/128@2 4xL2:256/64/8/512@2 2xL3:12288/64/16/12288@32"},
    {"intel-hybrid", 1, "12th Gen Intel(R) Core(TM) i5 hybrid",
     "1/5/6 1xL1d:48/64/12/64@2 1xL1i:32/64/8/64@2 1xL2:1280/64/10/2048@8 "
     "1xL3:30720/64/12/40960@128 4xL1d:32/64/8/64@2 4xL1i:64/64/8/128@2 1xL2:2048/64/16/2048@8"},
    {"intel-virtual", 1, "Intel(R) Xeon(R) Processor",
     "1/2/2 2xL1d:32/64/8/64@1 2xL1i:32/64/8/64@1 2xL2:256/64/8/512@1 1xL3:30720/64/20/24576@2"},
    {"amd-k5", 2, "", "1/1/1"},
    {"amd-k6-3", 2, "AMD-K6(tm)-III Processor",
     "1/1/1 1xL1d:32/32/2/512@1 1xL1i:32/32/2/512@1 1xL2:256/32/4/2048@1"},
    {"amd-athlon-mp-pair", 2, "", "2/2/2"},
    {"amd-phenom-three-cores", 2, "AMD Phenom(tm) 8650 Triple-Core Processor",
     "1/3/3 3xL1d:64/64/2/512@1 3xL1i:64/64/2/512@1 3xL2:512/64/16/512@1 1xL3:2048/64/32/1024@3"},
    {"amd-modules", 2, "AMD FX(tm)-4300 Quad-Core Processor",
     "1/4/4 4xL1d:16/64/4/64@1 2xL1i:64/64/2/512@2 2xL2:2048/64/16/2048@2 1xL3:8192/64/64/2048@4"},
    {"amd-zen-two-packages", 2, "AMD EPYC 7003 series",
     "2/4/8 4xL1d:32/64/8/64@2 4xL1i:32/64/8/64@2 4xL2:512/64/8/1024@2 2xL3:32768/64/16/32768@4"},
    {"amd-virtual", 2, "AMD EPYC Processor",
     "2/2/2 2xL1d:32/64/8/64@1 2xL1i:32/64/8/64@1 2xL2:512/64/8/1024@1"},
    {"via", 6, "VIA Processor", "0/0/0"},
    {"cyrix", 9, "Cyrix Processor", "0/0/0"},
    {"transmeta", 3, "Transmeta Processor", "0/0/0"},
    {"unknown", 0, "Unknown Processor", "0/0/0"},
};

// A processor of a machine with leaf 0xB, 128 threads to a package and two to a core.
LeafTable server_processor(uint32_t x2apic) {
    LeafTable table;
    set_vendor(table, "GenuineIntel", 0xB);
    table.set(1, 0, {0x606A6, 0x800000 | x2apic << 24, 0, 1u << 28 | 1u << 25});
    table.set(4, 0, {1u << 14 | 1u << 5 | 1, 0x02C0003F, 63, 0});
    table.set(4, 1, {127u << 14 | 3u << 5 | 3, 0x02C0003F, 65535, 0});
    table.set(0xB, 0, {1, 2, 0x100, x2apic});
    table.set(0xB, 1, {7, 128, 0x201, x2apic});
    return table;
}

RecordedMachine server(uint32_t processors) {
    RecordedMachine machine;
    for (uint32_t i = 0; i < processors; ++i)
        machine.push_back(server_processor(i));
    return machine;
}

constexpr const char *cannot = "Can't determine CPU.";

} // namespace

TEST(CpuTopology, RecordedMachinesAreUnderstood) {
    for (const Case &c : cases) {
        SCOPED_TRACE(c.machine);
        const auto cpu = new_record();
        EXPECT_OK(detect(load_machine(c.machine), *cpu));
        EXPECT_EQ(cpu->vendor, c.vendor);
        EXPECT_STREQ(cpu->name, c.name);
        EXPECT_EQ(summary(*cpu), c.summary);
        EXPECT_EQ(cpu->os_sse, cpu->id.flags.sse);
    }
}

TEST(CpuTopology, WhatIsNotToldIsLeftAsItWas) {
    const auto cpu = new_record();
    std::memset(cpu.get(), 0x5A, sizeof *cpu);
    const auto before = std::make_unique<kestu_cpu_t>(*cpu);
    ASSERT_OK(detect(load_machine("transmeta"), *cpu));
    EXPECT_STREQ(cpu->vendor_name, "Transmeta");
    EXPECT_STREQ(cpu->vendor_id, "TransmetaCPU");
    constexpr size_t names = offsetof(kestu_cpu_t, id);
    EXPECT_EQ(std::memcmp(reinterpret_cast<char *>(cpu.get()) + names,
                          reinterpret_cast<char *>(before.get()) + names, sizeof *cpu - names),
              0);
    std::strcpy(cpu->name, "as it was");
    ASSERT_OK(detect(load_machine("amd-k5"), *cpu));
    EXPECT_STREQ(cpu->name, "as it was");
}

TEST(CpuTopology, EveryProcessorHasItsPlaceAndCaches) {
    const auto cpu = new_record();
    ASSERT_OK(detect(load_machine("intel-hybrid"), *cpu));
    const kestu_cpu_processor_t &fast = cpu->processors[1];
    const kestu_cpu_processor_t &slow = cpu->processors[5];
    EXPECT_EQ(fast.cache[2], cpu->processors[0].cache[2]);
    EXPECT_EQ(fast.cache[4], KESTU_CPU_NO_CACHE) << "a kind of the slow cores";
    EXPECT_EQ(slow.cache[2], KESTU_CPU_NO_CACHE);
    EXPECT_EQ(slow.cache[3], fast.cache[3]);
    EXPECT_EQ(slow.cache[6], cpu->processors[2].cache[6]);
    EXPECT_NE(slow.cache[4], cpu->processors[4].cache[4]);
    EXPECT_EQ(cpu->cores[0].thread_count, 2u);
    EXPECT_EQ(cpu->cores[4].thread_count, 1u);
    EXPECT_EQ(cpu->cores[4].core, 7u);
    EXPECT_EQ(cpu->packages[0].core_count, 5u);
    EXPECT_EQ(cpu->packages[0].thread_count, 6u);
    EXPECT_EQ(cpu->id.initial_apic_id, 0u) << "the record identifies the first processor";
}

// Identifiers may be wider than eight bits or moved by the firmware; where there are none, packages
// are told apart by index.
TEST(CpuTopology, ProcessorsAreToldApart) {
    const std::pair<const char *, const char *> machines[] = {
        {"intel-hybrid", "0:0.0.0 1:0.0.1 8:0.4.0 10:0.5.0 12:0.6.0 14:0.7.0 "},
        {"amd-modules", "0:0.0.0 1:0.1.0 2:0.2.0 3:0.3.0 "},
        {"intel-pentium3-pair", "0:0.0.0 0:1.0.0 "},
        {"amd-athlon-mp-pair", "0:0.0.0 0:1.0.0 "},
        {"intel-xeon-two-packages",
         "64:2.0.0 65:2.0.1 66:2.1.0 67:2.1.1 320:10.0.0 321:10.0.1 322:10.1.0 323:10.1.1 "},
        {"amd-zen-two-packages",
         "0:0.0.0 1:0.0.1 2:0.1.0 3:0.1.1 256:1.0.0 257:1.0.1 258:1.1.0 259:1.1.1 "}};
    for (const auto &[name, expected] : machines) {
        const auto cpu = new_record();
        ASSERT_OK(detect(load_machine(name), *cpu));
        EXPECT_EQ(places(*cpu), expected) << name;
    }
}

TEST(CpuTopology, WithoutDescriptionsFourLevelsAreAssumed) {
    const auto cpu = new_record();
    ASSERT_OK(detect(load_machine("intel-pentium4-hyperthreading"), *cpu));
    EXPECT_THAT(cpu->id.intel.cache_mask, ElementsAre(1, 1, 1, 1));
    EXPECT_THAT(cpu->id.intel.cache_mask_width, ElementsAre(1, 1, 1, 1));
    EXPECT_EQ(cpu->processors[1].cache[3], 0u);
    EXPECT_EQ(cpu->processors[1].cache[4], KESTU_CPU_NO_CACHE);
}

TEST(CpuTopology, AsManyProcessorsAsTheRecordHolds) {
    RecordedMachine machine = server(1024);
    std::reverse(machine.begin(), machine.end());
    const auto cpu = new_record();
    ASSERT_OK(detect(machine, *cpu));
    EXPECT_EQ(summary(*cpu), "8/512/1024 512xL1d:48/64/12/64@2 8xL3:49152/64/12/65536@128");
    EXPECT_EQ(cpu->processors[0].index, 0u);
    EXPECT_EQ(cpu->processors[0].apic_id, 1023u);
    EXPECT_EQ(cpu->cores[63].core, 63u) << "cores stand in the order of their identifiers";
    EXPECT_CHAIN(detect(server(1025), *cpu), Element(120175, cannot),
                 Element(120175, "Intel CPU topology detection error 1."));
}

TEST(CpuTopology, ProcessorsThatContradictEachOtherAreRefused) {
    const auto expect_flaw = [](const RecordedMachine &machine, const char *message) {
        const auto cpu = new_record();
        EXPECT_CHAIN(detect(machine, *cpu), Element(120175, cannot), Element(120175, message));
    };
    expect_flaw({server_processor(0), server_processor(1), server_processor(0)},
                "Intel CPU topology detection error 2.");
    RecordedMachine machine = server(2);
    machine[1].set(0xB, 0, {9, 2, 0x100, 1}); // threads wider than cores
    expect_flaw(machine, "Intel CPU topology detection error 3.");
    machine = server(2);
    machine[1].set(0xB, 1, {8, 128, 0x201, 1});
    expect_flaw(machine, "Intel CPU topology detection error 4.");
    machine = server(9);
    for (uint32_t i = 0; i < 9; ++i)
        for (uint32_t k = 0; k < 2; ++k)
            machine[i].set(4, k, {1u << 5 | 1, 0x02C0003F, 2 * i + k, 0});
    expect_flaw(machine, "Intel CPU topology detection error 6.");
    machine = load_machine("amd-phenom-three-cores");
    machine[2] = machine[1];
    expect_flaw(machine, "AMD CPU topology detection error 1.");
    machine = load_machine("amd-phenom-three-cores");
    machine[2].set(0x80000008, 0, {0x3030, 0, 0x3002, 0});
    expect_flaw(machine, "AMD CPU topology detection error 2.");
}

TEST(CpuTopology, NoProcessorIsAContradiction) {
    const auto cpu = new_record();
    const RecordedMachine nobody;
    const Replay replay(nobody);
    EXPECT_CHAIN(kestu_cpu_intel_topology(cpu.get(), kestu_pool),
                 Element(120175, "Intel CPU topology detection error 1."));
    EXPECT_CHAIN(kestu_cpu_amd_topology(cpu.get(), kestu_pool),
                 Element(120175, "AMD CPU topology detection error 1."));
}

TEST(CpuTopology, FailingIdentificationKeepsWhatWasRead) {
    const std::pair<const char *, int> failing[] = {{"intel-leaf-b-without-threads", 120171},
                                                    {"intel-restricted", 120172}};
    for (const auto &[name, code] : failing) {
        const auto cpu = new_record();
        EXPECT_CHAIN(detect(load_machine(name), *cpu), Element(code, cannot),
                     Element(code, "Error in Intel CPUID processing."), Element(code, ""));
        EXPECT_THAT(cpu->name, testing::StartsWith("Intel(R) "));
        EXPECT_EQ(cpu->os_sse, 1);
        EXPECT_EQ(cpu->thread_count, 0u);
    }
}

TEST(CpuTopology, TheClockIsMeasuredWhereTheRecordAsks) {
    const RecordedMachine machine = server(4);
    const auto measured = [&](int32_t measure, int32_t processor) {
        const auto cpu = new_record();
        cpu->measure = measure;
        cpu->measure_processor = processor;
        EXPECT_OK(detect(machine, *cpu));
        return std::vector<double>{cpu->processors[0].mhz, cpu->processors[1].mhz,
                                   cpu->processors[2].mhz, cpu->processors[3].mhz};
    };
    EXPECT_THAT(measured(0, -1), ElementsAre(0.0, 0.0, 0.0, 0.0));
    EXPECT_THAT(measured(1, 2), ElementsAre(0.0, 0.0, testing::Gt(1.0), 0.0));
    EXPECT_THAT(measured(1, -1), testing::Each(testing::Gt(1.0)));
    EXPECT_THAT(measured(1, 4), ElementsAre(0.0, 0.0, 0.0, 0.0));
}

TEST(CpuTopology, FailingAllocationsAreReported) {
    const RecordedMachine machine = server(128); // their leaves do not fit what a pool begins with
    const Replay replay(machine);
    const auto cpu = new_record();
    size_t failures = 0;
    for (bool failed = true; failed; failures += failed) {
        // An allocator of its own, which holds nothing beforehand.
        apr_allocator_t *allocator = nullptr;
        apr_pool_t *pool = nullptr;
        apr_allocator_create(&allocator);
        apr_pool_create_ex(&pool, nullptr, nullptr, allocator);
        apr_allocator_owner_set(allocator, pool);
        kestu_error_t *err = nullptr;
        {
            const AllocFailure failure(failures + 1, pools_too);
            err = kestu_cpu_detect(cpu.get(), pool);
            failed = failure.happened();
        }
        if (failed) {
            const std::vector<Element> chain = take_chain(err);
            ASSERT_EQ(chain.size(), 2u);
            EXPECT_THAT(chain[1].second, testing::AnyOf(std::strerror(ENOMEM),
                                                        testing::StartsWith("Failed to allocate")));
        } else {
            EXPECT_OK(err);
        }
        apr_pool_destroy(pool);
    }
    EXPECT_EQ(failures, 2u) << "the scratch pool, and what was read of the processors";
}
