#include "shell/shell.hpp"

#include "common/text.hpp"
#include "shell/child.hpp"
#include "shell/input.hpp"

#include "kestu_lib.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace program {
namespace {

constexpr const char *program_name = "kestu";

constexpr struct {
    const char *name, *description;
} own_commands[] = {
    {"help", "List the commands, or describe one: help image info"},
    {"exit", "Leave the shell"},
    {"quit", "Leave the shell"},
};

bool is_own(const std::string &name) {
    return std::any_of(std::begin(own_commands), std::end(own_commands),
                       [&](const auto &command) { return command.name == name; });
}

std::vector<Command> all_commands() {
    std::vector<Command> all = commands();
    std::erase_if(all, [](const Command &command) { return is_own(command.name); });
    for (const auto &[name, description] : own_commands)
        all.push_back({name, description});
    return all;
}

bool is_comment(const std::string &line) {
    const size_t first = line.find_first_not_of(" \t");
    return first != line.npos && line[first] == '#';
}

int talk() {
    std::printf("kestu %s. Type help for the commands, Ctrl-D to leave.\n", kestu_version_string());
    const KeysForCommands keys;
    Typed typed;
    Shell shell(true);
    std::string line;
    while (!shell.left()) {
        switch (typed.read(line, shell.incomplete())) {
        case Read::line:
            shell.take(line);
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
    return exit_ok;
}

int follow_script() {
    Script script;
    Shell shell(isatty(STDIN_FILENO) != 0);
    std::string line;
    while (!shell.left()) {
        const Read read = script.read(line);
        if (read == Read::failed)
            return exit_failure;
        if (read == Read::end)
            break;
        shell.take(line);
    }
    if (!shell.left() && shell.incomplete())
        shell.fail("the last command is not finished");
    return shell.status();
}

} // namespace

Shell::Shell(bool commands_read) : table_(all_commands()), keeps_input_(commands_read) {}

void Shell::take(const std::string &line) {
    if (!incomplete() && is_comment(line))
        return;
    if (line.find('\0') != line.npos) {
        forget();
        return fail("a line holds a zero byte");
    }
    if (Outcome outcome; !outcome.ok(words_.add(line))) {
        last_failure_ = outcome.status();
        return forget();
    }
    if (!incomplete())
        run_words(words_.take());
}

void Shell::fail(const std::string &message) {
    Outcome().fail(message);
    last_failure_ = exit_usage;
}

// Commands may be written as outside, with the program's name in front; options are its own.
void Shell::run_words(std::vector<std::string> command) {
    if (!command.empty() && command[0] == program_name)
        command.erase(command.begin());
    if (command.empty())
        return;
    const std::string &name = command[0];
    if (name == "help")
        return help({command.begin() + 1, command.end()});
    if (!is_own(name))
        return name.starts_with('-') || table_.find(name) ? run_program(command) : refuse(name);
    if (command.size() > 1)
        return fail("'" + name + "' stands alone");
    leaving_ = true;
}

void Shell::run_program(const std::vector<std::string> &arguments) {
    if (const int status = run_in_child(arguments, keeps_input_); status != exit_ok)
        last_failure_ = status;
}

void Shell::refuse(const std::string &name) {
    const Command *nearest = table_.nearest(name);
    fail("no command '" + printable(name.c_str()) + "'; " +
         (nearest ? "did you mean '" + nearest->name + "'?" : "help lists the commands"));
}

void Shell::help(std::vector<std::string> names) {
    if (names.empty())
        return list();
    const Command *command = table_.find(names[0]);
    if (!command)
        return refuse(names[0]);
    if (is_own(command->name)) {
        std::printf("%s\n", command->description.c_str());
        return;
    }
    names.emplace_back("--help");
    run_program(names);
}

// A shell in a shell is refused, and so not offered.
void Shell::list() const {
    size_t width = 0;
    for (const Command &command : table_.all())
        width = std::max(width, command.name.size());
    for (const Command &command : table_.all())
        if (command.name != "shell")
            std::printf("  %-*s  %s\n", static_cast<int>(width), command.name.c_str(),
                        command.description.c_str());
}

int run_shell() {
    return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO) ? talk() : follow_script();
}

} // namespace program
