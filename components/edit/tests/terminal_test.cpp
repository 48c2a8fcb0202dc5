// The editor at a terminal, which has its settings back at every end.
#include "kestu_edit.h"
#include "support/process.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"

#include <csignal>

#include <unistd.h>

using namespace kestu::test;

namespace {

kestu_edit_t *edit = nullptr;

std::string described(const termios &settings) {
    std::string all;
    for (const auto flags :
         {settings.c_iflag, settings.c_oflag, settings.c_cflag, settings.c_lflag})
        all += std::to_string(flags) + " ";
    return all + std::string(settings.c_cc, settings.c_cc + NCCS);
}

// Reads lines and reports each as "state text"; the end of the input ends it.
void read_lines() {
    kestu_error_clear(kestu_edit_create(&edit, 0, 1, nullptr));
    for (int state = KESTU_EDIT_LINE; state != KESTU_EDIT_END;) {
        if (kestu_error_t *err = kestu_edit_readline(edit, "> ", 0, &state)) {
            Terminal::report("failed");
            kestu_error_clear(err);
            break;
        }
        Terminal::report(std::to_string(state) + " " + kestu_edit_line(edit, nullptr));
    }
    kestu_edit_destroy(&edit);
}

class EditTerminal : public testing::Test {
  protected:
    void start(void (*body)() = read_lines) {
        before = described(terminal.settings());
        terminal.run(body);
        terminal.wait_for_text("> |");
    }
    void expect(const std::string &keys, const std::string &shown) {
        terminal.type(keys);
        terminal.wait_for_text(shown);
    }
    void expect_settings_as_before() { EXPECT_EQ(described(terminal.settings()), before); }

    Terminal terminal{30, 10};
    std::string before;
};

} // namespace

TEST_F(EditTerminal, LinesAreReadOneByOne) {
    start();
    expect("one \xc3\xa4", "> one \xc3\xa4|");
    EXPECT_NE(described(terminal.settings()), before);
    terminal.type("\rtwo\x03\x1b[200~three\nfour\x1b[201~\r\x04");
    EXPECT_EQ(terminal.wait_for_report(), "1 one \xc3\xa4");
    EXPECT_EQ(terminal.wait_for_report(), "3 two");
    EXPECT_EQ(terminal.wait_for_report(), "1 three\r\nfour");
    EXPECT_EQ(terminal.wait_for_report(), "2 ");
    expect_settings_as_before();
}

TEST_F(EditTerminal, TheWindowMayChangeItsSizeAmidALine) {
    start();
    const std::string text = "a line that has forty-five characters in all.";
    expect(text, "> a line that has forty-five c\nharacters in all.|");
    terminal.resize(60, 10);
    terminal.signal(SIGWINCH);
    expect("!", "> " + text + "!|");
    expect("\r", "!\n> |");
}

// The shell that would take the process up again is the test.
TEST_F(EditTerminal, StopsAndGoesOn) {
    start([] {
        signal(SIGTSTP, [](int) {
            kestu_edit_restore(edit);
            Terminal::report("stopped");
        });
        read_lines();
    });
    expect("half", "> half|");
    terminal.type("\x1a");
    EXPECT_EQ(terminal.wait_for_report(), "stopped");
    terminal.wait_for_text("> half|");
    // From outside, amid the line.
    terminal.signal(SIGTSTP);
    EXPECT_EQ(terminal.wait_for_report(), "stopped");
    terminal.wait_for_keys();
    expect("!", "> half!|");
    EXPECT_NE(described(terminal.settings()), before);
    terminal.type("\x04\r");
    EXPECT_EQ(terminal.wait_for_report(), "1 half!");
}

// Half a line must not be run because somebody has closed a window.
TEST_F(EditTerminal, AHangUpIsTheEndAndNoLine) {
    static int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    start([] {
        signal(SIGHUP, SIG_IGN);
        kestu_error_clear(kestu_edit_create(&edit, 0, 1, nullptr));
        for (int i = 0; i < 2; ++i) {
            int state = -1;
            kestu_error_t *err = kestu_edit_readline(edit, "> ", 0, &state);
            dprintf(ends[1], "%c", err ? '0' + err->code % 10 : 'a' + state);
            kestu_error_clear(err);
        }
    });
    expect("half", "> half|");
    terminal.hang_up();
    char told[2] = {};
    for (char &one : told)
        ASSERT_EQ(read(ends[0], &one, 1), 1);
    EXPECT_EQ(std::string(told, 2), "c1");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(EditTerminal, AHandlerPutsTheTerminalBack) {
    start([] {
        signal(SIGTERM, [](int) {
            kestu_edit_restore(edit);
            Terminal::report("ended");
            pause();
        });
        read_lines();
    });
    expect("half", "> half|");
    terminal.signal(SIGTERM);
    EXPECT_EQ(terminal.wait_for_report(), "ended");
    expect_settings_as_before();
}

TEST_F(EditTerminal, AnEventLoopReadsAndPrintsBetween) {
    start([] {
        int state = KESTU_EDIT_MORE;
        kestu_error_clear(kestu_edit_create(&edit, 0, 1, nullptr));
        kestu_error_clear(kestu_edit_begin(edit, "> ", 0));
        for (int i = 0; state == KESTU_EDIT_MORE; ++i) {
            kestu_error_clear(kestu_edit_read(edit, &state));
            if (i == 0) {
                kestu_error_clear(kestu_edit_hide(edit));
                static_cast<void>(!write(1, "news\n", 5));
                kestu_error_clear(kestu_edit_show(edit));
            }
        }
        Terminal::report(kestu_edit_line(edit, nullptr));
    });
    expect("a", "news\n> a|");
    terminal.type("b\r");
    EXPECT_EQ(terminal.wait_for_report(), "ab");
    expect_settings_as_before();
}

TEST(EditInput, WhatIsNoTerminalIsReadLineByLine) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const std::string text = std::string("one\tx\n\x01\x1b[A\n\nno end", 19);
    ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    close(ends[1]);
    kestu_edit_t *editor = nullptr;
    ASSERT_OK(kestu_edit_create(&editor, ends[0], 1, kestu_pool));
    int state = -1;
    errno = EXDEV;
    for (const char *line : {"one\tx", "\x01\x1b[A", "", "no end"}) {
        ASSERT_OK(kestu_edit_readline(editor, "> ", 0, &state));
        EXPECT_EQ(state, KESTU_EDIT_LINE);
        EXPECT_STREQ(kestu_edit_line(editor, nullptr), line);
    }
    ASSERT_OK(kestu_edit_readline(editor, "> ", 0, &state));
    EXPECT_EQ(state, KESTU_EDIT_END);
    close(ends[0]);
    EXPECT_EQ(take_chain(kestu_edit_readline(editor, "> ", 0, &state))[1].first, 120031);
    EXPECT_EQ(errno, EXDEV);
    kestu_edit_destroy(&editor);
}
