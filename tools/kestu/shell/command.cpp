// `kestu shell`: the commands at a prompt.
#include "program.hpp"
#include "shell/shell.hpp"

namespace program {
namespace {

constexpr const char *notes =
    R"(Words are parted by blanks. Double quotes make one word of what holds blanks or begins with a
backslash. A backslash where a word could begin continues the command on the next line, and so
does an open quote. Lines that begin with # are comments. help lists the commands.

At the prompt the keys of other shells edit the line: Ctrl-A, Ctrl-E, Ctrl-W, Ctrl-Y, Ctrl-R
and so on; Tab completes commands and files, Up and Down recall earlier lines that begin as
this one, Ctrl-C gives the line up, Ctrl-D leaves. While a command runs Ctrl-C ends it, and
the shell goes on. Earlier lines are kept in $XDG_STATE_HOME/kestu/history, or
~/.local/state/kestu/history.

When standard input is a file or a pipe its lines are run without prompt and history. Commands
then find nothing on their own standard input, and the exit status is that of the last command
that failed, 0 if none did.)";

// Commands of a shell run in copies of its process, which remember it.
bool in_shell = false;

void shell(Outcome &outcome) {
    if (in_shell)
        return outcome.fail("this is the shell already; exit leaves it");
    in_shell = true;
    try {
        outcome.fail_with(run_shell());
    } catch (const std::exception &error) {
        outcome.fail(error.what());
    }
}

} // namespace

void add_shell_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("shell", "Type commands at a prompt, with a history");
    command->footer(notes);
    command->callback([&outcome] { shell(outcome); });
}

} // namespace program
