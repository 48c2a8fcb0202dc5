// Detection on the machine that the test runs on, beside what the system tells of it.
#include "machine/fake_scheduler.hpp"
#include "machine/replayed.hpp"
#include "support/process.hpp"
#include "support/test.hpp"

#include <map>
#include <sstream>

using namespace kestu::test;

namespace {

constexpr const char *cannot = "Can't determine CPU.";

// Words with single blanks between them.
std::string squeezed(const std::string &text) {
    std::istringstream in(text);
    std::string result;
    for (std::string word; in >> word;)
        result += (result.empty() ? "" : " ") + word;
    return result;
}

// The fields of the first processor of /proc/cpuinfo.
std::map<std::string, std::string> read_cpuinfo() {
    std::istringstream in(read_file("/proc/cpuinfo"));
    std::map<std::string, std::string> fields;
    for (std::string line; std::getline(in, line) && !line.empty();) {
        const size_t colon = std::min(line.find(':'), line.size() - 1);
        fields[squeezed(line.substr(0, colon))] = squeezed(line.substr(colon + 1));
    }
    return fields;
}

std::string cpu_folder(uint32_t index) {
    return "/sys/devices/system/cpu/cpu" + std::to_string(index) + "/";
}

std::string read_line(const std::string &path) {
    return squeezed(read_file(path));
}

// How many different contents the file has over all processors.
uint32_t distinct(const kestu_cpu_t &cpu, const std::string &file) {
    std::set<std::string> contents;
    for (uint32_t i = 0; i < cpu.thread_count; ++i)
        contents.insert(read_line(cpu_folder(i) + file));
    return static_cast<uint32_t>(contents.size());
}

// An emulator of the processor gives its own leaves to every thread.
bool is_emulated() {
    return read_file("/proc/self/maps").find("vgpreload") != std::string::npos;
}

bool sees_all_processors() {
    const auto allowed = allowed_processors();
    return static_cast<int>(allowed.size()) == kestu_mach_os_cpu_num();
}

class RealCpu : public testing::Test {
  protected:
    void SetUp() override {
        if (is_emulated() || !sees_all_processors())
            GTEST_SKIP() << "the process does not see all of the real processors";
        ASSERT_OK(kestu_cpu_detect(cpu_.get(), kestu_pool));
        if (cpu_->vendor != KESTU_CPU_INTEL && cpu_->vendor != KESTU_CPU_AMD)
            GTEST_SKIP() << "not a processor whose topology is known";
    }

    std::unique_ptr<kestu_cpu_t> cpu_ = new_record();
};

} // namespace

TEST_F(RealCpu, IsIdentifiedAsTheSystemDoes) {
    auto info = read_cpuinfo();
    if (info["vendor_id"].empty())
        GTEST_SKIP() << "/proc/cpuinfo tells nothing";
    EXPECT_EQ(info["vendor_id"], cpu_->vendor_id);
    EXPECT_EQ(info["cpu family"], std::to_string(cpu_->id.display_family));
    EXPECT_EQ(info["model"], std::to_string(cpu_->id.display_model));
    EXPECT_EQ(info["stepping"], std::to_string(cpu_->id.stepping));
    EXPECT_EQ(info["model name"], squeezed(cpu_->name));
}

TEST_F(RealCpu, HasThePackagesCoresAndThreadsThatTheSystemSees) {
    EXPECT_EQ(static_cast<int>(cpu_->thread_count), kestu_mach_os_cpu_num());
    if (read_line(cpu_folder(0) + "topology/thread_siblings_list").empty())
        GTEST_SKIP() << "/sys tells no topology";
    EXPECT_EQ(cpu_->package_count, distinct(*cpu_, "topology/core_siblings_list"));
    if (cpu_->vendor == KESTU_CPU_AMD && cpu_->id.display_family == 0x15)
        GTEST_SKIP() << "the system takes the cores of a module for threads";
    EXPECT_EQ(cpu_->core_count, distinct(*cpu_, "topology/thread_siblings_list"));
}

TEST_F(RealCpu, HasAClockAndTheFlagsOf64Bits) {
    const auto measured = new_record();
    measured->measure = 1;
    ASSERT_OK(kestu_cpu_detect(measured.get(), kestu_pool));
    EXPECT_GT(measured->processors[0].mhz, 0.0);
    EXPECT_EQ(cpu_->id.intel.lm + cpu_->id.amd.lm, 1);
    EXPECT_EQ(cpu_->os_sse, 1);
}

TEST(CpuDetect, LeavesTheAffinityAsItWas) {
    const std::vector<int> all = allowed_processors();
    const auto cpu = new_record();
    kestu_error_clear(kestu_cpu_detect(cpu.get(), kestu_pool));
    EXPECT_EQ(allowed_processors(), all);
    ASSERT_OK(kestu_cpu_bind_context_to_logcpu(static_cast<uint32_t>(all.back())));
    kestu_error_clear(kestu_cpu_detect(cpu.get(), kestu_pool));
    EXPECT_THAT(allowed_processors(), testing::ElementsAre(all.back()));
    cpu_set_t set;
    CPU_ZERO(&set);
    for (const int processor : all)
        CPU_SET(processor, &set);
    sched_setaffinity(0, sizeof set, &set);
}

TEST(CpuDetect, AProcessThatMayNotRunEverywhereGetsTheVendorAlone) {
    if (is_emulated())
        GTEST_SKIP() << "the processor is emulated";
    FakeScheduler scheduler;
    scheduler.allowed = {{1, 2}};
    const auto cpu = new_record();
    cpu->id.flags.sse = 1;
    errno = EXDEV;
    kestu_error_t *err = kestu_cpu_detect(cpu.get(), kestu_pool);
    if (cpu->vendor != KESTU_CPU_INTEL && cpu->vendor != KESTU_CPU_AMD)
        GTEST_SKIP() << "not a processor whose topology is known";
    EXPECT_CHAIN(err, 120173, cannot, std::strerror(EXDEV));
    EXPECT_EQ(cpu->thread_count, 0u);
    EXPECT_STRNE(cpu->vendor_name, "");
    EXPECT_EQ(cpu->id.highest_leaf, 0u);
    EXPECT_EQ(cpu->os_sse, 0);
}

TEST_F(RealCpu, IsDetectedOnTheProcessorsThatMayBeVisited) {
    const std::vector<int> all = allowed_processors();
    const auto cpu = new_record();
    FakeScheduler scheduler;
    scheduler.allowed = {{all.back(), 1023}}; // the second cannot be bound to
    ASSERT_OK(kestu_cpu_detect_on(cpu.get(), nullptr, kestu_pool));
    EXPECT_EQ(cpu->thread_count, 1u);
    EXPECT_EQ(cpu->processors[0].index, static_cast<uint32_t>(all.back()));
    EXPECT_STREQ(cpu->name, cpu_->name);
    scheduler.allowed = all;
    uint8_t bits[3] = {};
    const kestu_cpu_genaffinity none = {0, bits}, first = {3, bits};
    EXPECT_EQ(take_chain(kestu_cpu_detect_on(cpu.get(), &none, kestu_pool))[0],
              Element(120175, cannot));
    bits[2] = 0x80;
    EXPECT_EQ(take_chain(kestu_cpu_detect_on(cpu.get(), &first, kestu_pool))[0],
              Element(120174, cannot));
    bits[0] = 1;
    ASSERT_OK(kestu_cpu_detect_on(cpu.get(), &first, kestu_pool));
    EXPECT_EQ(cpu->thread_count, 1u);
    EXPECT_EQ(allowed_processors(), all);
}

// Features that the system lists are those that cpuid tells; the system may hide some.
TEST_F(RealCpu, HasTheFeaturesThatTheSystemLists) {
    kestu_cpu_features_t features;
    kestu_cpu_features_read(&features);
    std::istringstream flags(read_cpuinfo()["flags"]);
    int known = 0;
    for (std::string flag; flags >> flag;)
        if (const int feature = kestu_cpu_feature_find(flag.c_str()); feature >= 0) {
            ++known;
            EXPECT_GE(kestu_cpu_feature_state(&features, feature), KESTU_CPU_PRESENT) << flag;
        }
    EXPECT_GT(known, 20);
    EXPECT_EQ(kestu_cpu_feature_usable(KESTU_CPU_FEATURE_AVX2), __builtin_cpu_supports("avx2") > 0);
    for (int feature = kestu_cpu_feature_next(-1); feature >= 0;
         feature = kestu_cpu_feature_next(feature)) {
        const kestu_cpu_feature_info_t *info = kestu_cpu_feature_info(feature);
        EXPECT_EQ(kestu_cpu_feature_find(info->name), feature);
        EXPECT_LE(kestu_cpu_feature_usable(feature) ? KESTU_CPU_USABLE : KESTU_CPU_ABSENT,
                  kestu_cpu_feature_state(&features, feature))
            << info->name;
    }
    EXPECT_EQ(kestu_cpu_feature_info(10), nullptr);
    EXPECT_EQ(kestu_cpu_feature_state(&features, 10), KESTU_CPU_ABSENT);
    EXPECT_EQ(kestu_cpu_feature_find("none"), KESTU_CPU_FEATURE_NONE);
    EXPECT_EQ(kestu_cpu_feature_next(INT32_MAX), KESTU_CPU_FEATURE_NONE);
}

TEST(CpuDetect, AffinityThatCannotBeReadStopsAtOnce) {
    FakeScheduler scheduler;
    scheduler.failing_get = EFAULT;
    const auto cpu = new_record();
    EXPECT_CHAIN(kestu_cpu_detect(cpu.get(), kestu_pool), 120173, cannot, std::strerror(EFAULT));
    EXPECT_STREQ(cpu->vendor_id, "");
}

TEST(CpuDetect, AffinityThatCannotBeRestoredStandsAboveEarlierErrors) {
    const std::vector<int> all = allowed_processors();
    const auto cpu = new_record();
    {
        FakeScheduler scheduler;
        scheduler.failing_set = EPERM;
        const auto chain = take_chain(kestu_cpu_detect(cpu.get(), kestu_pool));
        ASSERT_GE(chain.size(), 2u);
        EXPECT_EQ(chain[0], Element(120173, cannot));
        EXPECT_EQ(chain[1], Element(120173, std::strerror(EPERM)));
    }
    EXPECT_EQ(allowed_processors(), all);
}

TEST(CpuBits, SmallQueriesAnswer) {
    EXPECT_EQ(get_bits_from_uint32(0x12345678, 8, 15), 0x56u);
    EXPECT_EQ(kestu_cpu_check_flag(31, 0x80000000), 1);
    EXPECT_EQ(kestu_cpu_check_flag(0, 0x80000000), 0);
    EXPECT_EQ(kestu_cpu_check_flag(32, 0xFFFFFFFF), 0);
    EXPECT_EQ(os_sse, 0);
    EXPECT_GT(kestu_cpu_freq(), 0.0);
}
