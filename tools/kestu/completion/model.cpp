#include "completion/model.hpp"

#include "common/help.hpp"
#include "common/values.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace program {
namespace {

// Values are known by the names that help has for them.
CompletedValue value_named(const std::string &name) {
    const auto choices = words_of(name);
    if (!choices.empty())
        return {CompletedValue::words, name, choices};
    if (name == "FILE" || name == "OUT")
        return {CompletedValue::files, name, {}};
    if (name == "FOLDER")
        return {CompletedValue::folders, name, {}};
    if (name == "COMMAND...")
        return {CompletedValue::command, name, {}};
    return {CompletedValue::other, name, {}};
}

CompletedOption option_of(const CLI::Option &option) {
    CompletedOption result{option.get_snames(), option.get_lnames(), option.get_description(), {}};
    if (option.get_items_expected_max() > 0)
        result.value = value_named(option.get_type_name());
    result.repeats = option.get_items_expected_max() > 1;
    return result;
}

// Of more than one argument the last is completed in the place of all; files come last.
CompletedValue argument_of(const CLI::App &command) {
    CompletedValue value;
    for (const CLI::Option *option : command.get_options())
        if (option->get_positional()) {
            value = value_named(option->get_type_name());
            if (value.kind == CompletedValue::other)
                value = value_named(option->get_name(true));
        }
    return value;
}

// The names in `commands`, for a command that takes them as arguments.
void put_below(const std::string &path, std::vector<CompletedCommand> &commands) {
    for (CompletedCommand &command : commands) {
        command.path = path + " " + command.name;
        command.options.clear();
        command.argument = {};
        put_below(command.path, command.commands);
    }
}

CompletedCommand command_of(const CLI::App &app) {
    CompletedCommand result{path_of(app), app.get_name(), app.get_description(), {}, {}, {}};
    for (const CLI::App *sub : app.get_subcommands({}))
        result.commands.push_back(command_of(*sub));
    for (const CLI::Option *option : app.get_options())
        if (!option->get_positional())
            result.options.push_back(option_of(*option));
    result.argument = argument_of(app);
    return result;
}

} // namespace

CompletedCommand completed(const CLI::App &app) {
    CompletedCommand root = command_of(app);
    std::vector<CompletedCommand> names = root.commands;
    for (CompletedCommand &command : root.commands)
        if (command.name == "help") {
            put_below(command.path, names);
            command.commands = std::move(names);
            break;
        }
    return root;
}

std::vector<const CompletedCommand *> all_of(const CompletedCommand &root) {
    std::vector<const CompletedCommand *> all = {&root};
    for (const CompletedCommand &command : root.commands) {
        const auto below = all_of(command);
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

std::vector<std::string> names_of(const CompletedOption &option) {
    std::vector<std::string> names;
    for (const std::string &name : option.shorts)
        names.push_back("-" + name);
    for (const std::string &name : option.longs)
        names.push_back("--" + name);
    return names;
}

std::string in_quotes(const std::string &text) {
    return "'" + CLI::detail::find_and_replace(text, "'", "'\\''") + "'";
}

std::string joined(const std::vector<std::string> &words) {
    return CLI::detail::join(words, " ");
}

} // namespace program
