#include "common/usage.hpp"

#include "common/arguments.hpp"
#include "common/help.hpp"
#include "common/nearest.hpp"

#include <CLI/CLI.hpp>

#include <vector>

namespace program {
namespace {

using Words = std::vector<std::string>;

std::string quoted(const std::string &what) {
    return "'" + what + "'";
}

std::string hint(const CLI::App &command) {
    return "see '" + path_of(command) + " --help'";
}

std::string suggestion(const std::string &word, const Words &names, const CLI::App &command) {
    const std::string *meant = nearest(word, names);
    return "; " + (meant ? "did you mean " + quoted(*meant) + "?" : hint(command));
}

std::string unknown_option(const CLI::App &command, const std::string &word) {
    const std::string name = word.starts_with("--") ? word.substr(0, word.find('=')) : word;
    Words names;
    for (const CLI::Option *option : command.get_options())
        for (const std::string &known : option->get_lnames())
            names.push_back("--" + known);
    return quoted(name) + " is no option of " + quoted(path_of(command)) +
           suggestion(name, name.starts_with("--") ? names : Words(), command);
}

// What cannot be anything to `command`.
std::string unknown_word(const CLI::App &command, const std::string &parsed) {
    const std::string word = unmarked(parsed);
    if (parsed.size() > 1 && parsed[0] == '-')
        return unknown_option(command, word);
    if (!command.get_subcommands({}).empty())
        return unknown_command(command, word);
    return quoted(word) + " is one argument too many for " + quoted(path_of(command)) + "; " +
           hint(command);
}

// The parts of an option's message in front of and behind the first `between`.
std::string replaced(std::string message, const std::string &what, const std::string &by) {
    if (const size_t at = message.find(what); at != message.npos)
        message.replace(at, what.size(), by);
    return message;
}

// A message of the parser, in words for those who use it.
std::string reworded(const CLI::App &command, const CLI::ParseError &error) {
    std::string message = error.what();
    if (dynamic_cast<const CLI::ExcludesError *>(&error))
        return replaced(message, " excludes ", " cannot be used with ");
    if (dynamic_cast<const CLI::RequiresError *>(&error))
        return replaced(message, " requires ", " needs ");
    if (dynamic_cast<const CLI::RequiredError *>(&error) && !command.get_subcommands({}).empty())
        return quoted(path_of(command)) + " needs a command";
    if (!dynamic_cast<const CLI::ArgumentMismatch *>(&error))
        return message;
    const CLI::Option *option = command.get_option_no_throw(message.substr(0, message.find(':')));
    return option ? quoted(usage_of(*option)) + " needs its value" : message;
}

} // namespace

const CLI::App &chosen(const CLI::App &app) {
    const CLI::App *command = &app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    return *command;
}

bool lacks_command(const CLI::App &app) {
    return !chosen(app).get_subcommands({}).empty() && app.remaining(true).empty();
}

bool names_no_command(const CLI::App &app) {
    return !chosen(app).get_subcommands({}).empty() && !app.remaining(true).empty();
}

std::string fault_in_usage(const CLI::App &app, const CLI::ParseError &error) {
    const CLI::App &last = chosen(app);
    for (const CLI::App *command = &app;; command = command->get_subcommands().front()) {
        if (const Words unknown = command->remaining(); !unknown.empty())
            return unknown_word(*command, unknown.front());
        if (command == &last)
            return reworded(last, error) + "; " + hint(last);
    }
}

std::string unknown_command(const CLI::App &command, const std::string &word) {
    Words names;
    for (const CLI::App *sub : command.get_subcommands({}))
        names.push_back(sub->get_name());
    return quoted(word) + " is no command of " + quoted(path_of(command)) +
           suggestion(word, names, command);
}

} // namespace program
