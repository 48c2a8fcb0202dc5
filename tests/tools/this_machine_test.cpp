// What `kestu cpu` and `kestu host` tell of the machine that the test runs on.
#include "support/process.hpp"
#include "support/test.hpp"

#include <nlohmann/json.hpp>

#include <sched.h>

using namespace kestu::test;
using nlohmann::json;

TEST(CpuCommand, AProcessBoundToOneProcessorIsToldSo) {
    if (sysconf(_SC_NPROCESSORS_CONF) == 1)
        GTEST_SKIP() << "there is but one";
    const std::string here = std::to_string(sched_getcpu());
    const Ran ran = run({"taskset", "-c", here, KESTU_PROGRAM, "cpu", "--json"});
    if (ran.status == 0)
        GTEST_SKIP() << "not a processor whose topology is known";
    EXPECT_THAT(ran.err, HasSubstr("this process may run on 1 of "));
}

TEST(CpuCommand, TheRealProcessorIsDescribed) {
    const Ran ran = run_kestu({"cpu", "--json"});
    if (ran.status != 0)
        GTEST_SKIP() << "detection fails here: " << ran.err;
    const json cpu = json::parse(ran.out);
    EXPECT_EQ(cpu["processors"].size(), cpu["threads"]);
    const Ran measured = run_kestu({"cpu", "--measure", "--json"});
    EXPECT_GT(json::parse(measured.out)["processors"][0]["mhz"], 0.0);
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
