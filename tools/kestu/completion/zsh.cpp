#include "completion/model.hpp"

#include <CLI/StringTools.hpp>

#include <algorithm>

namespace program {
namespace {

std::string function_of(const CompletedCommand &command) {
    return "_" + CLI::detail::find_and_replace(command.path, " ", "_");
}

// What ends a description and its parts stands behind a backslash.
std::string escaped(std::string text) {
    for (const char *special : {"\\", "[", "]", ":"})
        text = CLI::detail::find_and_replace(text, special, std::string("\\") + special);
    return text;
}

// ":message:action".
std::string found_by(const CompletedValue &value) {
    const std::string message = ":" + escaped(value.name) + ":";
    switch (value.kind) {
    case CompletedValue::words:
        return message + "(" + joined(value.choices) + ")";
    case CompletedValue::files:
        return message + "_files";
    case CompletedValue::folders:
        return message + "_files -/";
    case CompletedValue::command:
        return ":*::command: _normal";
    case CompletedValue::other:
        return message + " ";
    default:
        return "";
    }
}

// An argument of _arguments for each name; one name given, the others are not offered any more.
std::string specification_of(const CompletedOption &option) {
    std::vector<std::string> names, marks;
    for (const std::string &name : option.shorts) {
        names.push_back("-" + name);
        marks.emplace_back("+");
    }
    for (const std::string &name : option.longs) {
        names.push_back("--" + name);
        marks.emplace_back("=");
    }
    const bool valued = option.value.kind != CompletedValue::none;
    const bool takes_rest = option.value.kind == CompletedValue::command;
    const bool repeats = option.repeats && !takes_rest;
    std::string lines;
    for (size_t i = 0; i < names.size(); ++i)
        lines +=
            " \\\n        " + in_quotes((repeats ? "*" : "(" + joined(names) + ")") + names[i] +
                                        (valued && !takes_rest ? marks[i] : "") + "[" +
                                        escaped(option.description) + "]" + found_by(option.value));
    return lines;
}

std::string options_of(const CompletedCommand &command) {
    std::string lines;
    for (const CompletedOption &option : command.options)
        lines += specification_of(option);
    return lines;
}

// A command that others follow completes their names, and leaves the rest to them.
std::string function_for_group(const CompletedCommand &command) {
    std::string descriptions, calls;
    for (const CompletedCommand &sub : command.commands) {
        descriptions += "        " + in_quotes(sub.name + ":" + escaped(sub.description)) + "\n";
        calls += "        " + sub.name + ") " + function_of(sub) + " ;;\n";
    }
    return function_of(command) +
           "() {\n    local curcontext=$curcontext state line\n    local -a commands=(\n" +
           descriptions + "    )\n    _arguments -C -s" + options_of(command) +
           " \\\n        '1: :->command' \\\n        '*:: :->rest'\n"
           "    case $state in\n"
           "    command) _describe command commands ;;\n"
           "    rest)\n        case $words[1] in\n" +
           calls + "        esac\n        ;;\n    esac\n}\n\n";
}

std::string function_for(const CompletedCommand &command) {
    if (!command.commands.empty())
        return function_for_group(command);
    const std::string argument =
        command.argument.kind == CompletedValue::none
            ? ""
            : " \\\n        " + in_quotes("*" + found_by(command.argument));
    return function_of(command) + "() {\n    _arguments -s" + options_of(command) + argument +
           "\n}\n\n";
}

} // namespace

std::string zsh_completion(const CompletedCommand &root) {
    std::string script = "#compdef kestu\n\n";
    for (const CompletedCommand *command : all_of(root))
        script += function_for(*command);
    return script + "if [ \"$funcstack[1]\" = _kestu ]; then\n    _kestu \"$@\"\nelse\n"
                    "    compdef _kestu kestu\nfi\n";
}

} // namespace program
