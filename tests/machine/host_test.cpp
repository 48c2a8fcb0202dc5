// What the host is, and the clocks.
#include "kestu_mach.h"

#include "machine/host.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include <sys/time.h>
#include <sys/times.h>
#include <unistd.h>

using namespace kestu;

namespace {

utsname sample_host() {
    utsname host = {};
    strcpy(host.sysname, "System");
    strcpy(host.version, "#1 Version");
    strcpy(host.release, "6.1");
    strcpy(host.machine, "x86_64");
    return host;
}

double ticks_spent() {
    tms spent;
    times(&spent);
    return static_cast<double>(spent.tms_utime + spent.tms_stime);
}

// Read before the library is started, when the process has spent more than a tick.
const double cpu_before_start = [] {
    while (ticks_spent() < 2) {
    }
    return kestu_time_cpu();
}();

std::string described(size_t size, std::string_view pretty, const utsname *host) {
    std::string buf(size, '\0');
    describe_os(buf.data(), size, pretty, host);
    return buf.c_str();
}

} // namespace

TEST(Host, ThePrettyNameStandsBetweenTheFirstAndTheLastQuote) {
    EXPECT_EQ(pretty_name("PRETTY_NAME=\"Debian GNU/Linux 12\"\n"), "Debian GNU/Linux 12");
    EXPECT_EQ(pretty_name("# PRETTY_NAME is \"a \"quoted\" name\" here"), "a \"quoted\" name");
    EXPECT_EQ(pretty_name("PRETTY_NAME=\"x\""), "x");
    for (const char *line : {"PRETTY_NAME=\"\"", "PRETTY_NAME=Debian", "PRETTY_NAME=\"cut off",
                             "NAME=\"Debian\"", "PRETTY_NAM=\"x\"", ""})
        EXPECT_EQ(pretty_name(line), "") << line;
}

TEST(Host, TheDescriptionUsesWhatIsKnown) {
    const utsname host = sample_host();
    EXPECT_EQ(described(80, "Pretty", &host), "Pretty, 6.1, x86_64");
    EXPECT_EQ(described(80, "Pretty", nullptr), "Pretty");
    EXPECT_EQ(described(80, "", &host), "System, #1 Version, 6.1, x86_64");
    EXPECT_EQ(described(80, "", nullptr), "Unknown Linux-compatible OS");
    EXPECT_EQ(described(80, std::string_view("Pretty\"", 6), nullptr), "Pretty");
}

TEST(Host, ADescriptionThatDoesNotFitIsCut) {
    const utsname host = sample_host();
    EXPECT_EQ(described(12, "Pretty", &host), "Pretty, 6.1");
    EXPECT_EQ(described(5, "", &host), "Syst");
    EXPECT_EQ(described(8, "", nullptr), "Unknown");
    EXPECT_EQ(described(1, "Pretty", &host), "");
}

TEST(Host, TheRunningSystemIsDescribedWithinTheBufferAndTheRestIsZero) {
    std::string whole(1000, '#');
    errno = EXDEV;
    ASSERT_EQ(kestu_mach_os_name(whole.data(), 1000), whole.data());
    EXPECT_EQ(errno, EXDEV);
    utsname host;
    ASSERT_EQ(uname(&host), 0);
    const std::string text = whole.c_str();
    EXPECT_TRUE(text.ends_with(std::string(", ") + host.release + ", " + host.machine)) << text;
    EXPECT_EQ(whole.find_first_not_of('\0', text.size()), std::string::npos);

    char buf[8] = "#######";
    kestu_mach_os_name(buf, 6);
    EXPECT_EQ(std::string(buf), text.substr(0, 5));
    EXPECT_EQ(buf[6], '#');
    EXPECT_EQ(kestu_mach_os_name(buf + 6, 0), buf + 6);
    EXPECT_EQ(buf[6], '#');
}

TEST(Host, FamiliesAreKnownByTheWholeName) {
    EXPECT_EQ(os_family("Linux"), 12);
    EXPECT_EQ(os_family("Darwin"), 20);
    EXPECT_EQ(os_family("FreeBSD"), 100);
    for (const char *name : {"Linux2", "linux", "Lin", "FreeBSD-CURRENT", ""})
        EXPECT_EQ(os_family(name), 4) << name;
    EXPECT_EQ(kestu_mach_os(), KESTU_OS_LINUX);
}

TEST(Host, ProcessorsMemoryAndProcessAreThoseOfTheSystem) {
    EXPECT_EQ(kestu_mach_os_cpu_num(), sysconf(_SC_NPROCESSORS_CONF));
    EXPECT_EQ(kestu_mach_physmem(), static_cast<double>(sysconf(_SC_PAGESIZE)) *
                                        static_cast<double>(sysconf(_SC_PHYS_PAGES)) / 1048576.0);
    EXPECT_EQ(kestu_getpid(), getpid());
}

TEST(Clocks, WallClockLiesBetweenTwoReadingsOfTheSystem) {
    const auto seconds = [] {
        timeval now;
        gettimeofday(&now, nullptr);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) / 1e6;
    };
    const double before = seconds();
    const double read = kestu_time_real();
    EXPECT_LE(before, read);
    EXPECT_LE(read, seconds());
}

TEST(Clocks, ProcessorTimeCountsUserAndSystemTicksInSecondsOnceItIsPrimed) {
    EXPECT_EQ(cpu_before_start, 0.0);
    EXPECT_EQ(kestu_time_init(), 0);
    const double tick = 1.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
    const double before = ticks_spent() * tick;
    const double read = kestu_time_cpu();
    EXPECT_GT(before, 0.0);
    EXPECT_LE(before, read);
    EXPECT_LE(read, ticks_spent() * tick);
}

TEST(Clocks, SleepingTakesAtLeastTheInterval) {
    timespec start, end;
    clock_gettime(CLOCK_MONOTONIC, &start);
    kestu_time_sleep(20000);
    clock_gettime(CLOCK_MONOTONIC, &end);
    EXPECT_GE((end.tv_sec - start.tv_sec) * 1000000000 + end.tv_nsec - start.tv_nsec, 20000000);
}
