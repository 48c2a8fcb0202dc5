// Masks of processors, binding, and the check that the process may run everywhere.
#include "machine/fake_scheduler.hpp"
#include "support/test.hpp"

using namespace kestu::test;
using testing::Each;

namespace {

struct Mask {
    explicit Mask(std::vector<uint8_t> content) : bytes(std::move(content)) {
        mask = {.size = static_cast<uint32_t>(bytes.size()), .bits = bytes.data()};
    }
    explicit Mask(size_t size) : Mask(std::vector<uint8_t>(size)) {}

    std::vector<uint8_t> bytes;
    kestu_cpu_genaffinity mask;
};

int compare(std::vector<uint8_t> a, std::vector<uint8_t> b) {
    const Mask first(std::move(a));
    const Mask second(std::move(b));
    const int forth = intel_cpuid_cmp_equal_genaffinity(&first.mask, &second.mask);
    EXPECT_EQ(forth, intel_cpuid_cmp_equal_genaffinity(&second.mask, &first.mask));
    return forth;
}

} // namespace

TEST(CpuMask, ProcessorsStandInBytesOfEightAndClearingOneThatIsNotThereAddsIt) {
    Mask m(16);
    for (const uint32_t cpu : {0u, 7u, 8u, 127u, 127u})
        ASSERT_OK(intel_cpuid_set_genaffinity_bit(&m.mask, cpu));
    for (int round = 0; round < 3; ++round)
        ASSERT_OK(intel_cpuid_clear_genaffinity_bit(&m.mask, 9));
    EXPECT_EQ(m.bytes,
              (std::vector<uint8_t>{0x81, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}));
    for (uint32_t cpu = 0; cpu < 128; ++cpu) {
        int found = -1;
        ASSERT_OK(cpuid_test_genaffinity_bit(&m.mask, cpu, &found));
        EXPECT_EQ(found, m.bytes[cpu / 8] >> cpu % 8 & 1);
    }
    intel_cpuid_clear_genaffinity_mask(&m.mask);
    EXPECT_THAT(m.bytes, Each(0));
}

TEST(CpuMask, ProcessorsBeyondTheMaskAreRefused) {
    Mask m(16);
    int found = 5;
    EXPECT_CHAIN(intel_cpuid_set_genaffinity_bit(&m.mask, 128), 120173,
                 "Can't set cpu 128 bit (mask supports only up to 128 cpus).");
    EXPECT_CHAIN(intel_cpuid_clear_genaffinity_bit(&m.mask, 4294967295u), 120173,
                 "Can't clear cpu 4294967295 bit (mask supports only up to 128 cpus).");
    EXPECT_CHAIN(cpuid_test_genaffinity_bit(&m.mask, 128, &found), 120173,
                 "Can't test cpu 128 bit (mask supports only up to 128 cpus).");
    EXPECT_EQ(found, 5);
    EXPECT_THAT(m.bytes, Each(0));
}

TEST(CpuMask, ComparisonLooksPastTheShorterMask) {
    EXPECT_EQ(compare({1, 2}, {1, 2}), 0);
    EXPECT_EQ(compare({1, 2}, {1, 3}), 1);
    EXPECT_EQ(compare({1, 2}, {1, 2, 0, 0}), 0);
    EXPECT_EQ(compare({1, 2}, {1, 2, 0, 1}), 1);
    EXPECT_EQ(compare({}, {}), 1) << "empty masks differ";
    EXPECT_EQ(compare({}, {0}), 1);
}

TEST(CpuBinding, BindsTheThreadToOneProcessor) {
    const std::vector<int> before = allowed_processors();
    for (const int cpu : before) {
        ASSERT_OK(kestu_cpu_bind_context_to_logcpu(static_cast<uint32_t>(cpu)));
        EXPECT_THAT(allowed_processors(), ElementsAre(cpu));
    }
    EXPECT_CHAIN(kestu_cpu_bind_context_to_logcpu(1024), 120174,
                 "Failed to bind context to a logical processor.", std::strerror(EINVAL));
    EXPECT_THAT(allowed_processors(), ElementsAre(before.back()));
}

TEST(CpuConsistency, StopsAtTheFirstGapAndAnUnreadableAffinityIsEmpty) {
    FakeScheduler scheduler;
    scheduler.allowed = {{0, 2}};
    Mask m(1);
    errno = EPERM;
    EXPECT_CHAIN(kestu_cpu_set_chk_process_affinity_consistency(&m.mask, 3), 120173,
                 std::strerror(EPERM));
    Mask one(1);
    ASSERT_OK(kestu_cpu_set_chk_process_affinity_consistency(&one.mask, 1));
    EXPECT_THAT(one.bytes, ElementsAre(0x01));
    scheduler.failing_get = ESRCH;
    EXPECT_CHAIN(kestu_cpu_set_chk_process_affinity_consistency(&m.mask, 1), 120173,
                 std::strerror(ESRCH));
    ASSERT_OK(kestu_cpu_set_chk_process_affinity_consistency(&m.mask, 0));
}

TEST(CpuConsistency, GoesToTheEndOfMaskAndSet) {
    FakeScheduler scheduler;
    scheduler.allowed.emplace();
    for (int cpu = 0; cpu < 1024; ++cpu)
        scheduler.allowed->push_back(cpu);
    Mask small(1);
    EXPECT_CHAIN(kestu_cpu_set_chk_process_affinity_consistency(&small.mask, 9), 120173,
                 "Can't set cpu 8 bit (mask supports only up to 8 cpus).");
    Mask large(200);
    ASSERT_OK(kestu_cpu_set_chk_process_affinity_consistency(&large.mask, 1024));
    EXPECT_EQ(large.bytes[127], 0xFF);
    EXPECT_EQ(large.bytes[128], 0);
    errno = ENOENT;
    EXPECT_CHAIN(kestu_cpu_set_chk_process_affinity_consistency(&large.mask, 1025), 120173,
                 std::strerror(ENOENT));
}
