// The line editor on a terminal, as a person uses it.
#include "support/pty.hpp"
#include "support/test.hpp"

#include <csignal>

#include <fcntl.h>
#include <sys/syscall.h>

using namespace kestu::test;

namespace {

// In the child that runs the editor, done before each read of a key.
std::function<void()> before_read;

std::string escaped(const char *text) {
    char *result = kestu_str_replace_all(text, "\n", "\\n");
    std::string copy = result;
    std::free(result);
    return copy;
}

// Reads lines and reports each until reading fails, which is reported too.
struct Editing {
    const char *prompt = "> ";
    int echo = 1;
    std::vector<const char *> history = {};
    std::function<void()> prepare = [] {};

    void operator()() const {
        kestu_ri_t *ctx = nullptr;
        char *line = nullptr;
        kestu_error_t *err = kestu_ri_readline_init(&ctx, prompt, echo, kestu_pool);
        for (const char *entry : history)
            err = err ? err : kestu_ri_readline_addhist(entry, ctx);
        prepare();
        before_read = before_read ? before_read : Terminal::mark;
        while (!err && !(err = kestu_ri_readline(&line, ctx)))
            Terminal::report(escaped(line));
        std::string chain;
        for (const Element &element : take_chain(err))
            chain += std::to_string(element.first) + " " + element.second + ";";
        Terminal::report(chain);
    }
};

const std::string up = "\x1b[A", down = "\x1b[B", right = "\x1b[C", left = "\x1b[D", end = "\x1bOF",
                  home = "\x1bOH", erase = "\x1b[3~", enter = "\r", backspace = "\x7f";

class ReadLine : public testing::Test {
  protected:
    void start(const Editing &editing) {
        terminal.run(editing);
        terminal.wait_for_mark();
    }

    // Ends the line and waits for the result. The next line's first mark follows.
    std::string finish(const std::string &key = enter) {
        terminal.type(key);
        return terminal.wait_for_report();
    }

    void type(const std::string &keys) {
        for (const char c : keys)
            terminal.press({&c, 1});
    }

    // Without the terminal's interrupt key its byte goes to the editor.
    void switch_interrupt_off() const {
        terminal.change_settings([](termios &t) { t.c_cc[VINTR] = _POSIX_VDISABLE; });
    }

    bool is_raw() const { return !(terminal.settings().c_lflag & (ICANON | ECHO)); }

    Terminal terminal{20, 6};
};

} // namespace

// Stands before the C library's read, for the library under test too.
ssize_t marked_read(int file, void *buffer, size_t size) asm("read");
ssize_t marked_read(int file, void *buffer, size_t size) {
    if (file == STDIN_FILENO && before_read)
        before_read();
    return syscall(SYS_read, file, buffer, size);
}

TEST_F(ReadLine, TheScreenFollowsEveryKey) {
    start({.history = {"old", "new"}});
    EXPECT_EQ(terminal.shown(), "> |");
    const struct {
        std::string key, shown;
    } steps[] = {
        {"a", "> a|"},       {"c", "> ac|"},       {left, "> a|c"},     {"b", "> ab|c"},
        {home, "> |abc"},    {erase, "> |bc"},     {right, "> b|c"},    {end, "> bc|"},
        {backspace, "> b|"}, {up, "> new|"},       {up, "> old|"},      {down, "> new|"},
        {down, "> b|"},      {"\t", "> b\t|"},     {backspace, "> b|"}, {"\xe9", "> b\xe9|"},
        {left, "> b|\xe9"},  {"\x0c", "> b\xe9|"},
    };
    for (const auto &step : steps)
        EXPECT_EQ(terminal.press(step.key), step.shown) << testing::PrintToString(step.key);
    EXPECT_EQ(finish(), "b\xe9\\n");
    terminal.wait_for_mark();
    EXPECT_EQ(terminal.shown(), "> b\xe9\n> |");
}

TEST_F(ReadLine, ALineIsReturnedWithItsLineFeedWhereTheCursorStood) {
    start({});
    type("abc");
    terminal.press(left);
    EXPECT_EQ(finish(), "ab\\nc");
    terminal.wait_for_mark();
    EXPECT_EQ(terminal.shown(), "> ab\nc> |");
}

TEST_F(ReadLine, InterruptGivesAnEmptyLine) {
    switch_interrupt_off();
    start({});
    type("abc");
    EXPECT_EQ(finish("\x03"), "");
    terminal.wait_for_mark();
    EXPECT_EQ(terminal.shown(), "\n^C\n> > |");
    EXPECT_EQ(terminal.press(up), "\n^C\n> |");
}

TEST_F(ReadLine, EndOfFileEndsOnlyAnEmptyLine) {
    start({});
    type("ab");
    EXPECT_EQ(terminal.press("\x04"), "^D\n|");
    EXPECT_EQ(terminal.press("c"), "^D\n> abc|");
    EXPECT_EQ(finish(), "abc\\n");
    terminal.wait_for_mark();
    EXPECT_TRUE(is_raw());
    EXPECT_EQ(finish("\x04"), "120133 ;");
    EXPECT_FALSE(is_raw());
    EXPECT_EQ(terminal.shown(), "^D\n> abc\n^D\n|");
}

TEST_F(ReadLine, TheSettingsAreRawWhileReadingAndOnlyThen) {
    terminal.change_settings([](termios &t) {
        t.c_iflag |= BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF | IXANY;
        t.c_cflag |= PARENB | PARODD;
        t.c_cflag = (t.c_cflag & ~tcflag_t{CSIZE}) | CS7;
        t.c_lflag |= ECHONL | IEXTEN | TOSTOP;
        t.c_cc[VMIN] = 1;
        t.c_cc[VERASE] = 'e';
    });
    const termios before = terminal.settings();
    start({});
    const termios during = terminal.settings();
    EXPECT_EQ(during.c_iflag, before.c_iflag & ~tcflag_t{BRKINT | PARMRK | ISTRIP | INLCR | IGNCR |
                                                         ICRNL | IXON | IXOFF});
    EXPECT_EQ(during.c_oflag, before.c_oflag);
    EXPECT_EQ(during.c_cflag & (CSIZE | PARENB | PARODD), tcflag_t{CS8 | PARODD});
    EXPECT_EQ(during.c_lflag, before.c_lflag & ~tcflag_t{ICANON | ECHO | ECHONL | IEXTEN});
    EXPECT_TRUE(during.c_lflag & ISIG);
    EXPECT_EQ(during.c_cc[VERASE], 'e');
    type("e");
    EXPECT_EQ(finish(), "e\\n");
    terminal.wait_for_mark();
    EXPECT_TRUE(is_raw());
    finish("\x04");
    const termios after = terminal.settings();
    EXPECT_EQ(after.c_iflag, before.c_iflag);
    EXPECT_EQ(after.c_oflag, before.c_oflag);
    EXPECT_EQ(after.c_cflag, before.c_cflag);
    EXPECT_EQ(after.c_lflag, before.c_lflag);
}

TEST_F(ReadLine, BytesThatAreNoKeyFailAndLeaveTheTerminalRaw) {
    for (const char *bytes : {"\x1b[5~", "\x1b[3;5~", "ab", "\xc3\xa9", "\x1b[", "\x1bOA",
                              "nineteen bytes at once", "\x1b[Ax"}) {
        Terminal other(20, 6);
        other.run(Editing{});
        other.wait_for_mark();
        other.press("x");
        other.type(bytes);
        EXPECT_EQ(other.wait_for_report(), "120131 ;") << bytes;
        EXPECT_FALSE(other.settings().c_lflag & ICANON);
    }
}

TEST_F(ReadLine, TheEndOfTheInputIsNoKey) {
    terminal.run(Editing{.prepare = [] { dup2(open("/dev/null", O_RDONLY), STDIN_FILENO); }});
    EXPECT_EQ(terminal.wait_for_report(), "120131 ;");
    EXPECT_EQ(terminal.shown(), "> |");
}

TEST_F(ReadLine, AFailedReadIsReportedWithItsReason) {
    const auto ignore = [] {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, nullptr);
    };
    start({.prepare = ignore});
    type("a");
    terminal.signal(SIGUSR1);
    EXPECT_EQ(terminal.wait_for_report(), "120132 Interrupted system call;");
    EXPECT_TRUE(is_raw());
    Terminal other(20, 6);
    other.run(Editing{.prepare = [] { close(STDIN_FILENO); }});
    EXPECT_EQ(other.wait_for_report(), "120132 Bad file descriptor;");
}

TEST_F(ReadLine, WithoutATerminalToMeasureNothingIsRead) {
    const std::string failure = "120130 Can't retrive line.;120130 ;";
    const auto redirect_output = [] { dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO); };
    terminal.run(Editing{.prepare = redirect_output});
    EXPECT_EQ(terminal.wait_for_report(), failure);
    EXPECT_FALSE(is_raw());
    // The same while a line is read, when the window changes.
    Terminal other(20, 6);
    other.run(Editing{.prepare = [=] {
        before_read = [=] {
            redirect_output();
            raise(SIGWINCH);
        };
    }});
    other.type("a");
    EXPECT_EQ(other.wait_for_report(), failure);
    EXPECT_FALSE(other.settings().c_lflag & ICANON);
}

TEST_F(ReadLine, TheFirstChangeOfTheWindowIsFollowed) {
    start({});
    type("abcd");
    terminal.resize(8, 4);
    terminal.wait_for_mark();
    // The row is cleared to its new width before the line is drawn.
    EXPECT_EQ(terminal.press(left), "> abc|d");
    EXPECT_EQ(terminal.press("1"), "> abc1|d");
    type("2");
    EXPECT_EQ(terminal.press("3"), "> abc123\n> abc123|");
    // The second is not: what stands behind the eighth column is no longer cleared.
    terminal.resize(20, 4);
    EXPECT_EQ(terminal.press("4"), "> abc123\n> abc1234|d");
    EXPECT_EQ(terminal.press(backspace), "> abc123\n> abc123|dd");
    EXPECT_EQ(finish(), "abc123\\nd");
}

TEST_F(ReadLine, AChangedWindowDoesNotLoseAKey) {
    start({.prepare = [] {
        before_read = [reads = 0]() mutable {
            if (++reads == 2)
                raise(SIGWINCH);
            Terminal::mark();
        };
    }});
    type("a");
    EXPECT_EQ(terminal.press("b"), "> ab|");
}

TEST_F(ReadLine, WithoutEchoNothingIsShown) {
    switch_interrupt_off();
    start({.echo = 0, .history = {"old"}});
    for (const std::string &key :
         {std::string("a"), left, home, up, end, std::string("\x04"), std::string("\x0c")})
        EXPECT_EQ(terminal.press(key), "|");
    EXPECT_EQ(finish(), "old\\n");
    terminal.wait_for_mark();
    type("x");
    EXPECT_EQ(finish("\x03"), "");
    terminal.wait_for_mark();
    EXPECT_EQ(finish("\x04"), "120133 ;");
    EXPECT_EQ(terminal.shown(), "|");
}

TEST_F(ReadLine, WithoutAPromptTheLineStandsAlone) {
    start({.prompt = nullptr});
    EXPECT_EQ(terminal.press("a"), "a|");
    EXPECT_EQ(finish(), "a\\n");
}

TEST_F(ReadLine, ALineMayBeWiderThanTheTerminal) {
    start({});
    type("0123456789abcdefgh");
    EXPECT_EQ(terminal.shown(), "> 0123456789abcdefgh|");
    // A line is not folded: what goes beyond the row takes another one with every key.
    EXPECT_EQ(terminal.press("i"), "> 0123456789abcdefgh\n> 0123456789abcdefgh\ni|");
    std::string line = "0123456789abcdefghi";
    for (int i = 0; i < 300; ++i)
        terminal.press("x");
    line.append(300, 'x');
    EXPECT_EQ(finish(), line + "\\n");
}
