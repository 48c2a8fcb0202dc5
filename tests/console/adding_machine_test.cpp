// The example of an interactive program, used as a person uses it.
#include "support/pty.hpp"
#include "support/test.hpp"

// A key follows when the one before is on the screen: several at once are no key.
TEST(AddingMachine, AddsWhatIsTypedUntilItCannotBeRead) {
    kestu::test::Terminal terminal(60, 12);
    const auto enter = [&](const std::string &line, const std::string &answer) {
        std::string shown = "add> ";
        for (const char c : line) {
            terminal.type({&c, 1});
            terminal.wait_for_text((shown += c) + "|");
        }
        terminal.type("\r");
        terminal.wait_for_text(shown + "\n" + answer + "add> |");
    };
    terminal.run({KESTU_ADDING_MACHINE});
    terminal.wait_for_text("add> |");
    enter("0x10 ten", "'ten' is no number\n16\n");
    enter("1 \\", "");
    enter("2.5", "19.5\n");
    terminal.type("pasted");
    EXPECT_EQ(terminal.wait_for_end(), 1);
    EXPECT_TRUE(terminal.shown().ends_with("\nError(120131): Can't read character.\n|"));
}
