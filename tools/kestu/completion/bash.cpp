#include "completion/model.hpp"

namespace program {
namespace {

constexpr const char *walk = R"(
_kestu() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command=kestu commands options argument value i
    _kestu_follow kestu
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ " $commands " == *" ${COMP_WORDS[i]} "* ]]; then
            command+=" ${COMP_WORDS[i]}"
            _kestu_follow "$command"
        fi
    done
    if [[ $word == '=' ]]; then
        word=
    elif [[ $before == '=' ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    if ! _kestu_value "$command" "$before"; then
        if [[ $word == -* ]]; then
            value="-W $options"
        elif [[ $commands ]]; then
            value="-W $commands"
        else
            value=$argument
        fi
    fi
    COMPREPLY=()
    case $value in
    -W*) mapfile -t COMPREPLY < <(compgen -W "${value#-W }" -- "$word") ;;
    -?)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen "$value" -- "$word")
        ;;
    esac
}

complete -F _kestu kestu
)";

// How compgen finds the values.
std::string found_by(const CompletedValue &value) {
    switch (value.kind) {
    case CompletedValue::words:
        return "-W " + joined(value.choices);
    case CompletedValue::files:
        return "-f";
    case CompletedValue::folders:
        return "-d";
    case CompletedValue::command:
        return "-c";
    default:
        return "";
    }
}

std::string what_follows(const CompletedCommand &command) {
    std::vector<std::string> names, options;
    for (const CompletedCommand &sub : command.commands)
        names.push_back(sub.name);
    for (const CompletedOption &option : command.options)
        for (const std::string &name : names_of(option))
            options.push_back(name);
    return "    " + in_quotes(command.path) + ")\n        commands=" + in_quotes(joined(names)) +
           "\n        options=" + in_quotes(joined(options)) +
           "\n        argument=" + in_quotes(found_by(command.argument)) + "\n        ;;\n";
}

std::string values_of(const CompletedCommand &command) {
    std::string cases;
    for (const CompletedOption &option : command.options)
        if (option.value.kind != CompletedValue::none) {
            std::string pattern;
            for (const std::string &name : names_of(option))
                pattern += (pattern.empty() ? "" : " | ") + in_quotes(command.path + " " + name);
            cases += "    " + pattern + ") value=" + in_quotes(found_by(option.value)) + " ;;\n";
        }
    return cases;
}

} // namespace

std::string bash_completion(const CompletedCommand &root) {
    std::string follow, values;
    for (const CompletedCommand *command : all_of(root)) {
        follow += what_follows(*command);
        values += values_of(*command);
    }
    return "# bash completion for kestu\n\n"
           "_kestu_follow() { # _kestu_follow COMMAND: what may stand behind it\n"
           "    case $1 in\n" +
           follow +
           "    esac\n}\n\n"
           "_kestu_value() { # _kestu_value COMMAND OPTION: how the option's value is completed\n"
           "    case \"$1 $2\" in\n" +
           values + "    *) return 1 ;;\n    esac\n}\n" + walk;
}

} // namespace program
