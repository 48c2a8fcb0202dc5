// Log files.
#include "support/process.hpp"
#include "support/test.hpp"

#include <ctime>
#include <fstream>

#include <sys/wait.h>

using namespace kestu::test;

namespace {

class Log : public testing::Test {
  protected:
    kestu_log_t *open(const char *path = nullptr) {
        kestu_log_t *log = nullptr;
        EXPECT_OK(kestu_log_create(&log, path ? path : name.c_str(), pool));
        return log;
    }

    std::string content() const { return read_file(name); }

    const TemporaryFolder folder;
    const std::string name = folder / "log";
    Pool pool;
};

std::string stderr_of(const std::function<void()> &action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST_F(Log, TextsAreAppendedToWhatTheFileHolds) {
    std::ofstream(name) << "kept\n";
    kestu_log_t *first = open();
    kestu_log_t *second = open();
    EXPECT_STREQ(first->name, name.c_str());
    EXPECT_NE(first->pool, static_cast<apr_pool_t *>(pool));
    kestu_log_printf(first, "%s %d\n", "one", 1);
    kestu_log_printf(second, "%2c|%.1f", '2', 1e20);
    kestu_log_printf(first, "%s", "");
    kestu_log_printf(first, "%clost, but for the newline\n", 0);
    kestu_log_terminate(first);
    kestu_log_terminate(second);
    EXPECT_EQ(content(), "kept\none 1\n 2|100000000000000000000.0\n");
}

TEST_F(Log, TextsAreCutTo999Characters) {
    kestu_log_t *log = open();
    for (const size_t length : {999u, 1000u, 100000u})
        kestu_log_printf(log, "%s", std::string(length, 'x').c_str());
    EXPECT_EQ(content(), std::string(3 * 999, 'x'));
    kestu_log_dtprintf(log, "%s", std::string(1000, 'y').c_str());
    EXPECT_EQ(content().substr(3 * 999 + 26), std::string(999, 'y'));
}

TEST_F(Log, TheDateStandsBeforeATextEvenWhenItIsEmpty) {
    setenv("TZ", "Asia/Kathmandu", 1);
    tzset();
    kestu_log_t *log = open();
    const time_t before = time(nullptr);
    kestu_log_dtprintf(log, "%s", "");
    kestu_log_dtprintf(log, "%s\n", "text");
    const time_t after = time(nullptr);
    const std::string written = content();
    ASSERT_EQ(written.size(), 26u + 26 + 5);
    EXPECT_EQ(written.substr(24, 2), ": ");
    EXPECT_EQ(written.substr(26 + 24), ": text\n");
    tm date = {};
    ASSERT_NE(strptime(written.substr(26, 24).c_str(), "%a %b %d %H:%M:%S %Y", &date), nullptr);
    date.tm_isdst = -1;
    const time_t stamp = mktime(&date);
    EXPECT_TRUE(before <= stamp && stamp <= after);
    unsetenv("TZ");
    tzset();
}

TEST_F(Log, EveryLineOfAChainBecomesALine) {
    kestu_log_t *log = open();
    kestu_error_t *err =
        kestu_error_create_i(0, 5, 0, nullptr, nullptr, nullptr, std::string(3000, 'x').c_str());
    err = kestu_error_quick_wrap_i(0, nullptr, nullptr, err, "Cannot go.");
    kestu_error_clear(kestu_error_handle(err, kestu_log_errhandler, log));
    const std::string prefix = "Error(5): ";
    EXPECT_EQ(content(),
              prefix + "Cannot go. \n" + prefix + std::string(998 - prefix.size(), 'x') + "\n");
    EXPECT_EQ(kestu_log_errhandler("", log), 0);
    EXPECT_EQ(content().back(), '\n');
}

TEST_F(Log, AFileThatCannotBeOpenedLeavesALogWithoutOne) {
    kestu_log_t *log = nullptr;
    const std::string missing = folder / "none/log";
    EXPECT_CHAIN(kestu_log_create(&log, missing.c_str(), pool), 0, "Cannot create log.",
                 "Can't open file '" + missing + "'", "No such file or directory");
    ASSERT_NE(log, nullptr);
    EXPECT_EQ(log->file, nullptr);
    EXPECT_STREQ(log->name, missing.c_str());
    EXPECT_EQ(stderr_of([&] { kestu_log_printf(log, "text"); }),
              "Error: Cannot write to log. \nError: Bad file descriptor \n");
    EXPECT_EQ(stderr_of([&] { kestu_log_terminate(log); }), "");
}

TEST_F(Log, FailuresToWriteAreReportedOnceAndDisturbNothing) {
    kestu_log_t *full = open("/dev/full");
    errno = ERANGE;
    const std::string printed = stderr_of([&] {
        kestu_log_dtprintf(full, "%d\n", 1);
        EXPECT_EQ(errno, ERANGE);
    });
    EXPECT_EQ(printed, "Error: Cannot write to log. \nError: No space left on device \n");
    kestu_log_terminate(full);

    kestu_log_t *closed = open();
    kestu_log_terminate(closed);
    EXPECT_THAT(stderr_of([&] { kestu_log_printf(closed, "x"); }),
                HasSubstr("Cannot write to log. \nError: Bad file descriptor \n"));
    EXPECT_EQ(stderr_of([&] { kestu_log_terminate(closed); }), "Error: Bad file descriptor \n");
    EXPECT_EQ(content(), "");
}

TEST_F(Log, ProcessesThatShareAFileDoNotTearEachOthersLines) {
    constexpr int writers = 4, lines = 300;
    for (int writer = 0; writer < writers; ++writer)
        if (fork() == 0) {
            kestu_log_t *log = open();
            const std::string body(static_cast<size_t>(100 * writer + 50),
                                   static_cast<char>('a' + writer));
            for (int i = 0; i < lines; ++i)
                kestu_log_dtprintf(log, "<%s>\n", body.c_str());
            _exit(0);
        }
    for (int status, writer = 0; writer < writers; ++writer)
        ASSERT_TRUE(wait(&status) > 0 && status == 0);
    std::ifstream in(name);
    int whole[writers] = {};
    for (std::string line; std::getline(in, line);) {
        ASSERT_GT(line.size(), 28u) << line;
        ASSERT_EQ(line.substr(24, 3), ": <") << line;
        const int writer = line[27] - 'a';
        ASSERT_EQ(line.substr(27),
                  std::string(static_cast<size_t>(100 * writer + 50), line[27]) + ">");
        ++whole[writer];
    }
    EXPECT_THAT(whole, testing::Each(lines));
}
