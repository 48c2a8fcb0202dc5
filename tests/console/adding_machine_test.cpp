// The example of an interactive program, used as a person uses it.
#include "support/pty.hpp"

#include <gmock/gmock.h>

using kestu::test::Terminal;
using testing::EndsWith;

namespace {

class AddingMachine : public testing::Test {
  protected:
    AddingMachine() {
        terminal.run({KESTU_ADDING_MACHINE});
        terminal.wait_for_text("add> |");
    }

    // A key follows when the one before is on the screen: several at once are no key.
    void type(const std::string &line) {
        std::string shown = "add> ";
        for (const char c : line) {
            terminal.type({&c, 1});
            terminal.wait_for_text((shown += c) + "|");
        }
    }

    void enter(const std::string &line, const std::string &answer) {
        type(line);
        terminal.type("\r");
        terminal.wait_for_text("add> " + line + "\n" + answer + "add> |");
    }

    Terminal terminal{60, 12};
};

} // namespace

TEST_F(AddingMachine, AddsWhatIsTyped) {
    enter("1 2.5", "3.5\n");
    enter("0x10 ten", "'ten' is no number\n19.5\n");
    enter("1 \\", "");
    enter("2", "22.5\n");
    terminal.type("\x1b[A");
    terminal.wait_for_text("add> 2|");
    terminal.type("\r");
    terminal.wait_for_text("24.5\nadd> |");
    terminal.type("\x04");
    EXPECT_EQ(terminal.wait_for_end(), 0);
    EXPECT_THAT(terminal.shown(), EndsWith("24.5\n^D\n|"));
}

TEST_F(AddingMachine, FailsOnWhatItCannotRead) {
    type("1");
    terminal.type("pasted");
    EXPECT_EQ(terminal.wait_for_end(), 1);
    EXPECT_EQ(terminal.shown(), "\nError(120131): Can't read character.\n|");
}
