// What the host is, and the clocks.
#include "machine/cpu_freq.hpp"
#include "machine/host.hpp"
#include "support/test.hpp"

#include <fstream>

#include <sys/time.h>
#include <sys/times.h>

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
    for (const char *line :
         {"PRETTY_NAME=\"\"", "PRETTY_NAME=Debian", "PRETTY_NAME=\"cut off", "NAME=\"Debian\""})
        EXPECT_EQ(pretty_name(line), "") << line;
}

TEST(Host, TheDescriptionUsesWhatIsKnownAndIsCut) {
    const utsname host = sample_host();
    EXPECT_EQ(described(80, "Pretty", &host), "Pretty, 6.1, x86_64");
    EXPECT_EQ(described(80, "Pretty", nullptr), "Pretty");
    EXPECT_EQ(described(80, "", &host), "System, #1 Version, 6.1, x86_64");
    EXPECT_EQ(described(80, "", nullptr), "Unknown Linux-compatible OS");
    EXPECT_EQ(described(12, "Pretty", &host), "Pretty, 6.1");
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
    std::ifstream release("/etc/os-release");
    for (std::string line; std::getline(release, line);)
        if (line.starts_with("PRETTY_NAME=\"")) {
            EXPECT_EQ(text.substr(0, text.find(',')), line.substr(13, line.size() - 14));
        }

    char buf[8] = "#######";
    kestu_mach_os_name(buf, 6);
    EXPECT_EQ(std::string(buf), text.substr(0, 5));
    EXPECT_EQ(buf[6], '#');
    EXPECT_EQ(kestu_mach_os_name(buf + 6, 0), buf + 6);
    EXPECT_EQ(buf[6], '#');
}

TEST(Host, FamiliesAreKnownByTheWholeName) {
    EXPECT_EQ(os_family("Linux"), 12);
    EXPECT_EQ(os_family("FreeBSD"), 100);
    for (const char *name : {"Linux2", "Lin", ""})
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

TEST(CpuRate, EndsWithTwoRoundsThatAgreeOrAfterTen) {
    std::vector<Round> growing;
    for (uint32_t i = 0; i < 20; ++i)
        growing.push_back({10000u << i, 0.01});
    const struct {
        const char *what;
        std::vector<Round> rounds;
        uint32_t first_tick;
        double rate;
        size_t sleeps;
    } cases[] = {{"two that agree", {{20000, 0.01}, {21000, 0.01}}, 0, 2.1, 2},
                 {"late", {{10000, 0.01}, {20000, 0.01}, {30000, 0.01}, {30100, 0.01}}, 0, 3.01, 4},
                 {"none", growing, 0, 512, 10},
                 {"a wrap is replaced by the next", {{20000, 0.01}}, 0xFFFFFFFF, 2, 3},
                 {"a clock that runs back", {{20000, -1.0}, {20000, 0.01}}, 0, 2, 3}};
    for (const auto &c : cases) {
        EXPECT_NEAR(rate_of(c.rounds, c.first_tick), c.rate, 1e-3) << c.what;
        EXPECT_EQ(sleeps, c.sleeps) << c.what;
    }
    rate_of({{20000, 0.0}}); // a clock that stands agrees with nothing
    EXPECT_EQ(sleeps, 10u);
}
