// `kestu shell`: the commands at a prompt.
#include "program.hpp"
#include "shell/shell.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace program {
namespace {

constexpr const char *notes =
    R"(Words are parted by blanks; single and double quotes and backslashes keep them together as in
other shells, # begins a comment, and *, ? and [ stand for files. > FILE, >> FILE and | PROGRAM
take a command's output elsewhere. cd, pwd, history, help and exit are the shell's own.

At the prompt the keys of other shells edit the line: Ctrl-A, Ctrl-E, Ctrl-W, Ctrl-Y, Ctrl-R
and so on; Tab completes commands, options, values and files, Up and Down recall earlier lines
that begin as this one, Ctrl-C gives the line up, Ctrl-D leaves. While a command runs Ctrl-C
ends it, and the shell goes on. Earlier lines are kept in $XDG_STATE_HOME/kestu/history, or
~/.local/state/kestu/history.

A script (kestu shell FILE, or #!/usr/bin/env -S kestu shell) is run without prompt and history,
and so is what comes in through a pipe, of which commands read nothing. Messages name the script
and the line on which their command begins. The exit status is that
of the last command that failed, 0 if none did; --stop ends at the first.)";

// Commands of a shell run in copies of its process, which remember it.
bool in_shell = false;

void shell(const ShellOptions &options, Outcome &outcome) {
    if (in_shell)
        return outcome.fail("this is the shell already; exit leaves it");
    in_shell = true;
    try {
        outcome.fail_with(run_shell(options));
    } catch (const std::exception &error) {
        outcome.fail(error.what());
    }
}

} // namespace

void add_shell_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("shell", "Type commands at a prompt, with a history");
    command->footer(notes);
    auto options = std::make_shared<ShellOptions>();
    CLI::Option *file = command->add_option("FILE", options->file, "A script to run");
    CLI::Option *text =
        command->add_option("-c", options->text, "Run these commands")->type_name("TEXT");
    text->excludes(file);
    command->add_flag("--stop", options->stop, "End at the first command that fails");
    command->callback([options, text, &outcome] {
        options->has_text = text->count() > 0;
        shell(*options, outcome);
    });
}

} // namespace program
