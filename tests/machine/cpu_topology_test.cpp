// Whole machines, replayed: what detection makes of the leaves of all their processors.
#include "machine/replayed.hpp"
#include "machines/replay.hpp"
#include "support/test.hpp"

using namespace kestu::test;
using machines::Replay;

namespace {

kestu_error_t *detect(const RecordedMachine &machine, kestu_cpu_t &cpu) {
    const Replay replay(machine);
    return kestu_cpu_detect(&cpu, kestu_pool);
}

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
    EXPECT_THAT((std::vector{cpu->package_count, cpu->core_count, cpu->thread_count,
                             cpu->cache_count, cpu->caches[0].count, cpu->caches[1].count}),
                ElementsAre(8, 512, 1024, 2, 512, 8));
    EXPECT_EQ(cpu->processors[0].index, 0u);
    EXPECT_EQ(cpu->processors[0].apic_id, 1023u);
    EXPECT_EQ(cpu->cores[63].core, 63u) << "cores stand in the order of their identifiers";
    EXPECT_CHAIN(detect(server(1025), *cpu), 120175, cannot,
                 "Intel CPU topology detection error 1.");
}

TEST(CpuTopology, ProcessorsThatContradictEachOtherAreRefused) {
    const auto expect_flaw = [](const RecordedMachine &machine, const char *message) {
        const auto cpu = new_record();
        EXPECT_CHAIN(detect(machine, *cpu), 120175, cannot, message);
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
    EXPECT_CHAIN(kestu_cpu_intel_topology(cpu.get(), kestu_pool), 120175,
                 "Intel CPU topology detection error 1.");
    EXPECT_CHAIN(kestu_cpu_amd_topology(cpu.get(), kestu_pool), 120175,
                 "AMD CPU topology detection error 1.");
}

TEST(CpuTopology, FailingIdentificationKeepsWhatWasRead) {
    const std::pair<const char *, int> failing[] = {{"intel-leaf-b-without-threads", 120171},
                                                    {"intel-restricted", 120172}};
    for (const auto &[name, code] : failing) {
        const auto cpu = new_record();
        EXPECT_CHAIN(detect(load_machine(name), *cpu), code, cannot,
                     "Error in Intel CPUID processing.", "");
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
