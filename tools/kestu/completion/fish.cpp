#include "completion/model.hpp"

#include <CLI/StringTools.hpp>

namespace program {
namespace {

constexpr const char *at = R"(
function __kestu_at # __kestu_at COMMAND: whether the words on the line lead to it
    set -l command kestu
    for word in (commandline -opc)[2..]
        if contains -- "$command $word" $__kestu_commands
            set command "$command $word"
        end
    end
    test "$command" = "$argv[1]"
end

complete -c kestu -f
)";

std::string found_by(const CompletedValue &value) {
    switch (value.kind) {
    case CompletedValue::words:
        return " -x -a " + in_quotes(joined(value.choices));
    case CompletedValue::files:
        return " -r -F";
    case CompletedValue::folders:
        return " -x -a '(__fish_complete_directories (commandline -ct))'";
    case CompletedValue::command:
        return " -x -a '(__fish_complete_command)'";
    case CompletedValue::other:
        return " -x";
    default:
        return "";
    }
}

// A quote stands behind a backslash here.
std::string in_fish_quotes(std::string text) {
    text = CLI::detail::find_and_replace(text, "\\", "\\\\");
    return "'" + CLI::detail::find_and_replace(text, "'", "\\'") + "'";
}

std::string lines_of(const CompletedCommand &command) {
    const std::string begin =
        "complete -c kestu -n " + in_fish_quotes("__kestu_at '" + command.path + "'");
    std::string lines;
    for (const CompletedCommand &sub : command.commands)
        lines += begin + " -a " + sub.name + " -d " + in_fish_quotes(sub.description) + "\n";
    for (const CompletedOption &option : command.options) {
        lines += begin;
        for (const std::string &name : option.shorts)
            lines += " -s " + name;
        for (const std::string &name : option.longs)
            lines += " -l " + name;
        lines += " -d " + in_fish_quotes(option.description) + found_by(option.value) + "\n";
    }
    switch (command.argument.kind) {
    case CompletedValue::words:
        return lines + begin + " -a " + in_quotes(joined(command.argument.choices)) + "\n";
    case CompletedValue::files:
        return lines + begin + " -F\n";
    case CompletedValue::folders:
        return lines + begin + " -a '(__fish_complete_directories (commandline -ct))'\n";
    default:
        return lines;
    }
}

} // namespace

std::string fish_completion(const CompletedCommand &root) {
    std::string paths, lines;
    for (const CompletedCommand *command : all_of(root)) {
        paths += " " + in_fish_quotes(command->path);
        lines += lines_of(*command);
    }
    return "# fish completion for kestu\n\nset -g __kestu_commands" + paths + "\n" + at + lines;
}

} // namespace program
