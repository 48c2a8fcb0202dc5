// Detection on the machine that the test runs on, beside what the system tells of it.
#include "kestu_cpu.h"
#include "kestu_lib.h"
#include "kestu_mach.h"

#include "machine/fake_scheduler.hpp"
#include "machine/replayed.hpp"
#include "support/chain.hpp"
#include "support/process.hpp"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <sstream>

using namespace kestu::test;
using testing::AnyOf;
using testing::Eq;

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
        ASSERT_OK(kestu_cpu_detect(cpu.get(), kestu_pool));
        if (cpu->vendor != KESTU_CPU_INTEL && cpu->vendor != KESTU_CPU_AMD)
            GTEST_SKIP() << "not a processor whose topology is known";
    }

    std::unique_ptr<kestu_cpu_t> cpu = new_record();
};

struct CpuinfoFlag {
    const char *name;
    int32_t kestu_cpu_flags_t::*flag;
    bool intel_only = false;
};

using Flags = kestu_cpu_flags_t;

constexpr CpuinfoFlag cpuinfo_flags[] = {
    {"pni", &Flags::sse3},
    {"monitor", &Flags::monitor, true},
    {"ds_cpl", &Flags::ds_cpl, true},
    {"est", &Flags::eist, true},
    {"tm2", &Flags::tm2, true},
    {"ssse3", &Flags::ssse3},
    {"cid", &Flags::cnxt_id, true},
    {"sse4_1", &Flags::sse41},
    {"sse4_2", &Flags::sse42},
    {"avx", &Flags::avx},
    {"fpu", &Flags::fpu},
    {"vme", &Flags::vme},
    {"de", &Flags::de},
    {"pse", &Flags::pse},
    {"tsc", &Flags::tsc},
    {"msr", &Flags::msr},
    {"pae", &Flags::pae},
    {"mce", &Flags::mce},
    {"cx8", &Flags::cx8},
    {"apic", &Flags::apic},
    {"sep", &Flags::sep},
    {"mtrr", &Flags::mtrr},
    {"pge", &Flags::pge},
    {"mca", &Flags::mca},
    {"cmov", &Flags::cmov},
    {"pat", &Flags::pat},
    {"pse36", &Flags::pse36},
    {"clflush", &Flags::clfsh, true},
    {"dts", &Flags::ds, true},
    {"acpi", &Flags::acpi, true},
    {"mmx", &Flags::mmx},
    {"fxsr", &Flags::fxsr},
    {"sse", &Flags::sse},
    {"sse2", &Flags::sse2},
    {"ss", &Flags::ss, true},
    {"ht", &Flags::htt},
    {"tm", &Flags::tm, true},
    {"pbe", &Flags::pbe, true},
};

const char *sysfs_type(uint32_t type) {
    constexpr const char *names[] = {"", "Data", "Instruction", "Unified"};
    return type < std::size(names) ? names[type] : "";
}

// What the system tells of a cache of the first processor, by level and type.
std::map<std::string, std::string> read_caches() {
    std::map<std::string, std::string> caches;
    for (int i = 0;; ++i) {
        const std::string folder = cpu_folder(0) + "cache/index" + std::to_string(i) + "/";
        const std::string level = read_line(folder + "level");
        if (level.empty())
            return caches;
        caches[level + " " + read_line(folder + "type")] =
            read_line(folder + "size") + " " + read_line(folder + "coherency_line_size") + " " +
            read_line(folder + "number_of_sets");
    }
}

} // namespace

TEST_F(RealCpu, IsIdentifiedAsTheSystemDoes) {
    auto info = read_cpuinfo();
    if (info["vendor_id"].empty())
        GTEST_SKIP() << "/proc/cpuinfo tells nothing";
    EXPECT_EQ(info["vendor_id"], cpu->vendor_id);
    EXPECT_EQ(info["cpu family"], std::to_string(cpu->id.display_family));
    EXPECT_EQ(info["model"], std::to_string(cpu->id.display_model));
    EXPECT_EQ(info["stepping"], std::to_string(cpu->id.stepping));
    EXPECT_EQ(info["model name"], squeezed(cpu->name));
}

TEST_F(RealCpu, HasTheFlagsThatTheSystemSees) {
    std::istringstream words(read_cpuinfo()["flags"]);
    const std::set<std::string> seen{std::istream_iterator<std::string>(words), {}};
    if (seen.empty())
        GTEST_SKIP() << "/proc/cpuinfo tells nothing";
    for (const CpuinfoFlag &flag : cpuinfo_flags) {
        if (!seen.count(flag.name) || (flag.intel_only && cpu->vendor != KESTU_CPU_INTEL))
            continue;
        EXPECT_EQ(cpu->id.flags.*flag.flag, 1) << flag.name;
    }
    EXPECT_EQ(cpu->id.intel.lm + cpu->id.amd.lm, 1) << "the test runs in 64 bits";
    EXPECT_EQ(cpu->os_sse, 1);
}

TEST_F(RealCpu, HasThePackagesCoresAndThreadsThatTheSystemSees) {
    EXPECT_EQ(static_cast<int>(cpu->thread_count), kestu_mach_os_cpu_num());
    if (read_line(cpu_folder(0) + "topology/thread_siblings_list").empty())
        GTEST_SKIP() << "/sys tells no topology";
    EXPECT_EQ(cpu->package_count, distinct(*cpu, "topology/core_siblings_list"));
    if (cpu->vendor == KESTU_CPU_AMD && cpu->id.display_family == 0x15)
        GTEST_SKIP() << "the system takes the cores of a module for threads";
    EXPECT_EQ(cpu->core_count, distinct(*cpu, "topology/thread_siblings_list"));
}

TEST_F(RealCpu, HasTheCachesThatTheSystemSees) {
    const auto seen = read_caches();
    if (seen.empty())
        GTEST_SKIP() << "/sys tells no caches";
    std::map<std::string, std::string> found;
    for (uint32_t i = 0; i < cpu->cache_count; ++i) {
        const kestu_cpu_cache_t &cache = cpu->caches[i];
        if (cpu->processors[0].cache[i] != KESTU_CPU_NO_CACHE)
            found[std::to_string(cache.level) + " " + sysfs_type(cache.type)] =
                std::to_string(cache.size_kb) + "K " + std::to_string(cache.line) + " " +
                std::to_string(cache.sets);
    }
    EXPECT_EQ(found, seen);
}

TEST_F(RealCpu, HasAClock) {
    const auto measured = new_record();
    measured->measure = 1;
    ASSERT_OK(kestu_cpu_detect(measured.get(), kestu_pool));
    EXPECT_GT(measured->processors[0].mhz, 0.0);
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
    EXPECT_CHAIN(err, Element(120173, cannot), Element(120173, std::strerror(EXDEV)));
    EXPECT_EQ(cpu->thread_count, 0u);
    EXPECT_STRNE(cpu->vendor_name, "");
    EXPECT_EQ(cpu->id.highest_leaf, 0u);
    EXPECT_EQ(cpu->os_sse, 0);
}

TEST(CpuDetect, AffinityThatCannotBeReadStopsAtOnce) {
    FakeScheduler scheduler;
    scheduler.failing_get = EFAULT;
    const auto cpu = new_record();
    EXPECT_CHAIN(kestu_cpu_detect(cpu.get(), kestu_pool), Element(120173, cannot),
                 Element(120173, std::strerror(EFAULT)));
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
        if (sees_all_processors() && cpu->vendor_id[0] != 0 && chain.size() > 2) {
            EXPECT_EQ(chain[2], Element(120174, "Failed to bind context to a logical processor."));
            EXPECT_EQ(chain[3], Element(120174, std::strerror(EPERM)));
        }
    }
    EXPECT_EQ(allowed_processors(), all);
}

TEST(CpuBits, SmallQueriesAnswer) {
    EXPECT_EQ(get_bits_from_uint32(0x12345678, 8, 15), 0x56u);
    EXPECT_EQ(get_bits_from_uint32(0xFFFFFFFF, 26, 31), 0x3Fu);
    EXPECT_EQ(kestu_cpu_check_flag(31, 0x80000000), 1);
    EXPECT_EQ(kestu_cpu_check_flag(0, 0x80000000), 0);
    EXPECT_EQ(kestu_cpu_check_flag(32, 0xFFFFFFFF), 0);
    EXPECT_EQ(os_sse, 0);
    EXPECT_GT(kestu_cpu_freq(), 0.0);
}
