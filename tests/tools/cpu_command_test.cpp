// `kestu cpu` and `kestu host` as a user runs them.
#include "support/process.hpp"
#include "support/test.hpp"
#include "tools/columns.hpp"

#include <nlohmann/json.hpp>

#include <sstream>

#include <sched.h>

using namespace kestu::test;
using nlohmann::json;

namespace {

std::string machine(const std::string &name) {
    return std::string(KESTU_CPUID_FOLDER) + "/" + name + ".txt";
}

json json_of(const std::string &file) {
    const Ran ran = run_kestu({"cpu", "--from", file, "--json"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    return json::parse(ran.out, nullptr, false);
}

} // namespace

TEST(CpuCommand, JsonTellsARecordedMachineWhole) {
    const json cpu = json_of(machine("amd-zen-two-packages"));
    json head = cpu;
    for (const char *list : {"features", "caches", "processors"})
        head.erase(list);
    EXPECT_EQ(head, json::parse(R"_({"vendor_id": "AuthenticAMD", "vendor_code": 2,
        "vendor": "Advanced Micro Devices (AMD)", "name": "AMD EPYC 7003 series",
        "signature": 10489617, "family": 25, "model": 1, "stepping": 1,
        "packages": 2, "cores": 4, "threads": 8})_"));
    const std::vector<std::string> features = cpu["features"];
    for (const char *name : {"FPU", "SSE4.1", "AVX", "PSE-36", "HTT", "LM", "NX"})
        EXPECT_THAT(features, Contains(name));
    EXPECT_THAT(features, Not(Contains("3DNOW")));
    EXPECT_EQ(cpu["caches"].size(), 4u);
    EXPECT_EQ(cpu["caches"][3],
              json::parse(R"({"level": 3, "type": "unified", "size_kb": 32768, "line": 64,
                              "ways": 16, "sets": 32768, "shared_by": 4, "count": 2})"));
    EXPECT_EQ(cpu["processors"].size(), 8u);
    EXPECT_EQ(cpu["processors"][7],
              json::parse(R"({"index": 7, "apic_id": 259, "package": 1, "core": 1, "thread": 1})"));
}

TEST(CpuCommand, OtherVendorsAreReadByTheLeavesThatTheyHave) {
    const json via = json_of(machine("via"));
    EXPECT_EQ(via["brand"], "VIA Nehemiah");
    EXPECT_EQ(via["signature"], 0x698);
    EXPECT_EQ(via["threads"], 1);
    EXPECT_EQ(via["caches"][2]["size_kb"], 64);
    const json unknown = json_of(machine("unknown"));
    EXPECT_EQ(unknown["vendor_id"], "HygonGenuine");
    EXPECT_EQ(unknown["cores"], 1);
    EXPECT_EQ(unknown["threads"], 2);
}

TEST(CpuCommand, ThePageFitsItsWidthWithAndWithoutUnicode) {
    for (const size_t width : {80, 120, 300})
        for (const std::string locale : {"LC_ALL=C", "LC_ALL=C.UTF-8"}) {
            const Ran ran = run_kestu(
                {"cpu", "--from", machine("intel-hybrid"), "--width", std::to_string(width)}, "",
                {locale});
            ASSERT_EQ(ran.status, 0);
            EXPECT_THAT(ran.out, StartsWith("12th Gen Intel(R) Core(TM) i5 hybrid\n"));
            for (const char *part : {"1 package, 5 cores, 6 threads", "SSE4.2", "1 x 1.25 MB",
                                     "Package 0", "L3 30 MB", "L1i 64 KB"})
                EXPECT_THAT(ran.out, HasSubstr(part));
            expect_columns(ran.out, width, locale == "LC_ALL=C");
        }
}

TEST(CpuCommand, TheDrawingPutsCoresIntoTheCachesThatTheyShare) {
    const Ran ran = run_kestu({"cpu", "--from", machine("amd-modules"), "--ascii"});
    const size_t drawing = ran.out.find("+--");
    ASSERT_NE(drawing, std::string::npos);
    EXPECT_EQ(ran.out.substr(drawing),
              "+-----------------------------------------------------------------------------+\n"
              "| Package 0                                                                   |\n"
              "| +-------------------------------------------------------------------------+ |\n"
              "| | L3 8 MB                                                                 | |\n"
              "| | +---------------------------------+ +---------------------------------+ | |\n"
              "| | | L2 2 MB                         | | L2 2 MB                         | | |\n"
              "| | | +-----------------------------+ | | +-----------------------------+ | | |\n"
              "| | | | L1i 64 KB                   | | | | L1i 64 KB                   | | | |\n"
              "| | | | +-----------+ +-----------+ | | | | +-----------+ +-----------+ | | | |\n"
              "| | | | | L1d 16 KB | | L1d 16 KB | | | | | | L1d 16 KB | | L1d 16 KB | | | | |\n"
              "| | | | | 0         | | 1         | | | | | | 2         | | 3         | | | | |\n"
              "| | | | +-----------+ +-----------+ | | | | +-----------+ +-----------+ | | | |\n"
              "| | | +-----------------------------+ | | +-----------------------------+ | | |\n"
              "| | +---------------------------------+ +---------------------------------+ | |\n"
              "| +-------------------------------------------------------------------------+ |\n"
              "+-----------------------------------------------------------------------------+\n");
}

TEST(CpuCommand, FilesThatAreNoTablesAreNamedByTheirLine) {
    const TemporaryFolder folder;
    const std::pair<const char *, const char *> cases[] = {
        {"", "no processor is recorded"},
        {"0 0 1 2 3 4\n", "line 1: a line 'processor 0' must come first"},
        {"processor\n", "line 1: a decimal number expected behind 'processor'"},
        {"processor 1\n", "line 1: processor 0 expected"},
        {"processor 0\nprocessor 0\n", "line 2: processor 1 expected"},
        {"processor 0\n0 0 1 2 3 100000000\n", "line 2: six hexadecimal numbers"},
        {"processor 0\n0 0 1 2 3 4 5\n", "line 2: more than six numbers"},
        {"processor 0\n0 0 1 2 -3 4\n", "line 2: six hexadecimal numbers"},
    };
    for (const auto &[content, message] : cases) {
        const Ran ran = run_kestu({"cpu", "--from", folder.write("table.txt", content)});
        EXPECT_EQ(ran.status, 1);
        EXPECT_THAT(ran.out, IsEmpty());
        EXPECT_THAT(ran.err, HasSubstr(std::string("table.txt: ") + message));
    }
    EXPECT_THAT(run_kestu({"cpu", "--from", folder / "none"}).err,
                HasSubstr("cannot be read: No such file or directory"));
    EXPECT_THAT(run_kestu({"cpu", "--from", folder.path}).err,
                HasSubstr("cannot be read: Is a directory"));
}

TEST(CpuCommand, TextsOfTheTableDoNotReachTheTerminalRaw) {
    const TemporaryFolder folder;
    const std::string file = folder.write("odd.txt", "\tprocessor 0\r\n"
                                                     "0 0 1 756e6547 6c65746e 49656e69\r\n"
                                                     "80000000 0 80000004 0 0 0\r\n"
                                                     "80000002 0 41ff1b42 0 0 0\r\n");
    const Ran page = run_kestu({"cpu", "--from", file});
    EXPECT_EQ(page.status, 0);
    EXPECT_THAT(page.out, AllOf(StartsWith("B\\x1b"), Not(HasSubstr("\x1b"))));
    EXPECT_EQ(json_of(file)["name"], "B\x1b\xEF\xBF\xBD"
                                     "A");
}

TEST(CpuCommand, FailedDetectionIsExplained) {
    const Ran ran = run_kestu({"cpu", "--from", machine("intel-restricted")});
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.out, IsEmpty());
    EXPECT_THAT(ran.err,
                AllOf(HasSubstr("Error(120172): CPUID function is restricted (probably in BIOS)"),
                      HasSubstr("The firmware hides the leaves")));
}

TEST(CpuCommand, AProcessBoundToOneProcessorIsToldSo) {
    if (sysconf(_SC_NPROCESSORS_CONF) == 1)
        GTEST_SKIP() << "there is but one";
    const std::string here = std::to_string(sched_getcpu());
    const Ran ran = run({"taskset", "-c", here, KESTU_PROGRAM, "cpu", "--json"});
    if (ran.status == 0)
        GTEST_SKIP() << "not a processor whose topology is known";
    EXPECT_THAT(ran.err, AllOf(HasSubstr("Error(120173): Can't determine CPU."),
                               HasSubstr("this process may run on 1 of ")));
}

TEST(CpuCommand, TheRealProcessorIsDescribed) {
    const Ran ran = run_kestu({"cpu", "--json"});
    if (ran.status != 0)
        GTEST_SKIP() << "detection fails here: " << ran.err;
    const json cpu = json::parse(ran.out);
    EXPECT_EQ(cpu["processors"].size(), cpu["threads"]);
    const Ran measured = run_kestu({"cpu", "--measure", "--json"});
    EXPECT_GT(json::parse(measured.out)["processors"][0]["mhz"], 0.0);
    EXPECT_EQ(run_kestu({"cpu", "--measure", "--from", machine("via")}).status, 2)
        << "a recorded machine has no clock";
}

TEST(HostCommand, TellsSystemProcessorsMemoryAndClocks) {
    const Ran ran = run_kestu({"host", "--json"});
    ASSERT_EQ(ran.status, 0);
    const json host = json::parse(ran.out);
    EXPECT_EQ(host["processors"], sysconf(_SC_NPROCESSORS_CONF));
    EXPECT_GT(host["clocks"]["real"], 1.7e9);
    const Ran page = run_kestu({"host"});
    EXPECT_THAT(page.out, StartsWith(host["operating_system"].get<std::string>() + "\n"));
    EXPECT_THAT(page.out, AllOf(HasSubstr("Linux (12)"), HasSubstr(" MiB\n"), HasSubstr(" UTC (")));
}
