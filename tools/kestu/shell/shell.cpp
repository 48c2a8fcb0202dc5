#include "shell/shell.hpp"

#include "common/text.hpp"
#include "program.hpp"
#include "shell/child.hpp"
#include "shell/input.hpp"
#include "shell/redirection.hpp"

#include "kestu_lib.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include <unistd.h>

namespace program {
namespace {

constexpr const char *program_name = "kestu";

constexpr struct {
    const char *name, *description;
    CompletedValue::Kind argument = CompletedValue::none;
} own_commands[] = {
    {"cd", "Go to a folder, or home", CompletedValue::folders},
    {"pwd", "Print the folder"},
    {"history", "Print earlier lines"},
    {"help", "List the commands, or describe one: help image info"},
    {"exit", "Leave the shell, with a status if one is given"},
    {"quit", "Leave the shell"},
};

bool is_own(const std::string &name) {
    return std::any_of(std::begin(own_commands), std::end(own_commands),
                       [&](const auto &command) { return command.name == name; });
}

// The shell's own stand last. What may follow "help" is the program's.
CompletedCommand all_commands() {
    CompletedCommand root = commands();
    std::vector<CompletedCommand> &all = root.commands;
    for (const auto &[name, description, argument] : own_commands) {
        CompletedCommand own{name, name, description, {}, {}, {argument, "", {}}};
        for (CompletedCommand &command : all)
            if (command.name == name)
                own.commands.swap(command.commands);
        std::erase_if(all,
                      [&own](const CompletedCommand &command) { return command.name == own.name; });
        all.push_back(std::move(own));
    }
    return root;
}

// A paste may hold several commands.
void take_rows(Shell &shell, const std::string &text) {
    for (size_t at = 0; at <= text.size() && !shell.left();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        shell.take(text.substr(at, end - at));
        at = end + 1;
    }
}

int talk() {
    std::printf("kestu %s. Type help for the commands, Ctrl-D to leave.\n", kestu_version_string());
    const KeysForCommands keys;
    Shell shell(true);
    Typed typed(shell);
    shell.set_history(typed.editor());
    std::string text;
    while (!shell.left()) {
        switch (typed.read(text, shell.incomplete())) {
        case Read::line:
            take_rows(shell, text);
            break;
        case Read::interrupted:
            shell.forget();
            break;
        case Read::end:
            return exit_ok;
        case Read::failed:
            return exit_failure;
        }
    }
    return shell.asked();
}

int follow(Script &script, bool commands_read, bool stop) {
    Shell shell(commands_read);
    std::string line;
    while (!shell.left() && !(stop && shell.status() != exit_ok)) {
        const Read read = script.read(line);
        if (read == Read::failed)
            return exit_failure;
        if (read == Read::end)
            break;
        if (!shell.incomplete()) // a command stands where it begins
            set_place(script.place());
        shell.take(line);
    }
    if (!shell.left() && shell.incomplete())
        shell.fail("the last command is not finished", exit_usage);
    return shell.status();
}

} // namespace

Shell::Shell(bool commands_read) : table_(all_commands()), keeps_input_(commands_read) {}

void Shell::forget() {
    words_.take();
    words_.take_rest();
}

void Shell::take(const std::string &line) {
    if (line.find('\0') != line.npos) {
        forget();
        return fail("a line holds a zero byte", exit_usage);
    }
    words_.add(line);
    if (incomplete())
        return;
    std::vector<std::string> command = words_.take();
    run_words(std::move(command), words_.take_rest());
}

void Shell::fail(const std::string &message, int status) {
    Outcome().fail(message);
    status_ = status;
}

// Commands may be written as outside, with the program's name in front; options are its own.
void Shell::run_words(std::vector<std::string> command, const std::string &rest) {
    if (!command.empty() && command[0] == program_name)
        command.erase(command.begin());
    if (command.empty())
        return rest.empty() ? void() : fail("no command stands before '" + rest + "'", exit_usage);
    const std::string &name = command[0];
    if (!is_own(name) && !name.starts_with('-') && !table_.find(name))
        return refuse(name);
    if (!rest.empty() && rest.find_first_not_of(" \t\r|>") == rest.npos)
        return fail("nothing stands behind '" + rest + "'", exit_usage);
    Redirection redirection(rest);
    const int status = run_command(command);
    const int taken = redirection.finish();
    if (status != exit_ok || taken != exit_ok)
        status_ = status != exit_ok ? status : taken;
}

// The status of a command of the program; the shell's own tell theirs by failing.
int Shell::run_command(const std::vector<std::string> &command) {
    if (!is_own(command[0]))
        return run_in_child(command, keeps_input_);
    // Nobody may want all that is written.
    const auto before = signal(SIGPIPE, SIG_IGN);
    run_own(command);
    std::fflush(stdout);
    signal(SIGPIPE, before);
    return exit_ok;
}

void Shell::run_own(const std::vector<std::string> &command) {
    const std::string &name = command[0];
    if (name == "help")
        return help({command.begin() + 1, command.end()});
    if (name == "cd")
        return change_folder(command);
    if (name == "exit")
        return leave(command);
    if (command.size() > 1)
        return fail("'" + name + "' stands alone", exit_usage);
    if (name == "history")
        print_history();
    else if (name == "pwd")
        print_folder();
    else
        leaving_ = true;
}

void Shell::leave(const std::vector<std::string> &command) {
    int status = exit_ok;
    if (command.size() > 1) {
        const std::string &number = command[1];
        const char *end = number.data() + number.size();
        const auto read = std::from_chars(number.data(), end, status);
        if (command.size() > 2 || read.ptr != end || status < 0 || status > 255)
            return fail("exit takes a number from 0 to 255", exit_usage);
        status_ = asked_ = status;
    }
    leaving_ = true;
}

void Shell::change_folder(const std::vector<std::string> &command) {
    if (command.size() > 2)
        return fail("cd takes one folder", exit_usage);
    const char *home = std::getenv("HOME");
    std::string folder = command.size() > 1 ? command[1] : home ? home : "/";
    if (folder == "-" && !folder_before_.empty())
        folder = folder_before_;
    std::error_code gone;
    const std::string here = std::filesystem::current_path(gone);
    if (chdir(folder.c_str()) != 0)
        return fail(printable(folder.c_str()) + ": " + std::strerror(errno), exit_failure);
    folder_before_ = here;
}

void Shell::print_folder() {
    std::error_code gone;
    const std::string here = std::filesystem::current_path(gone);
    if (gone)
        fail("the folder: " + gone.message(), exit_failure);
    else
        std::printf("%s\n", here.c_str());
}

void Shell::print_history() const {
    for (size_t i = 0; history_ && i < kestu_edit_history_count(history_); ++i)
        std::printf("%5zu  %s\n", i + 1,
                    printable(kestu_edit_history_line(history_, i, nullptr)).c_str());
}

void Shell::refuse(const std::string &name) {
    const CompletedCommand *nearest = table_.nearest(name);
    fail("no command '" + printable(name.c_str()) + "'; " +
             (nearest ? "did you mean '" + nearest->name + "'?" : "help lists the commands"),
         exit_usage);
}

void Shell::help(std::vector<std::string> names) {
    if (names.empty())
        return list();
    const CompletedCommand *command = table_.find(names[0]);
    if (!command)
        return refuse(names[0]);
    if (is_own(command->name)) {
        std::printf("%s\n", command->description.c_str());
        return;
    }
    names.insert(names.begin(), "help");
    if (const int status = run_in_child(names, keeps_input_); status != exit_ok)
        status_ = status;
}

// A shell in a shell is refused, and so not offered.
void Shell::list() const {
    size_t width = 0;
    for (const CompletedCommand &command : table_.all())
        width = std::max(width, command.name.size());
    for (const CompletedCommand &command : table_.all())
        if (command.name != "shell")
            std::printf("  %-*s  %s\n", static_cast<int>(width), command.name.c_str(),
                        command.description.c_str());
}

int run_shell(const ShellOptions &options) {
    const bool from_input = options.file.empty() && !options.has_text;
    if (from_input && isatty(STDIN_FILENO) && isatty(STDOUT_FILENO))
        return talk();
    const std::unique_ptr<Script> script = options.has_text ? Script::of_text(options.text)
                                           : from_input     ? Script::of_standard_input()
                                                            : Script::of_file(options.file);
    if (!script)
        return exit_failure;
    return follow(*script, !from_input || isatty(STDIN_FILENO) != 0, options.stop);
}

} // namespace program
