#include "shell/completion.hpp"

#include "shell/shell.hpp"

#include <algorithm>
#include <filesystem>

namespace program {
namespace {

namespace fs = std::filesystem;

// What a backslash keeps in a word, for this shell and the system's.
constexpr std::string_view kept_in_words = " \t\r\n\\'\"|><#*?[&;()$`";
constexpr std::string_view kept_in_quotes = "\\\"$`";

// `text` as it is written behind the quote that is open, if one is.
std::string written(const std::string &text, char quote) {
    std::string result(quote ? 1 : 0, quote);
    for (const char c : text) {
        const std::string_view kept = quote ? kept_in_quotes : kept_in_words;
        if (quote == '\'' && c == '\'')
            result += "'\\'";
        else if (quote != '\'' && kept.find(c) != kept.npos)
            result += '\\';
        result += c;
    }
    return result;
}

class Completion {
  public:
    Completion(kestu_edit_proposals_t *proposals, TypedWords typed)
        : proposals_(proposals), typed_(std::move(typed)) {
        kestu_edit_propose_from(proposals_, typed_.begin);
    }

    void propose_word(const CompletedCommand &root) {
        if (typed_.behind_command)
            return propose_files("", typed_.last, false);
        const CompletedCommand &command = reached(root);
        const std::string &word = typed_.last;
        const size_t equals = word.starts_with("--") ? word.find('=') : word.npos;
        if (equals != word.npos) {
            if (const CompletedOption *option = option_of(command, word.substr(0, equals)))
                propose_value(option->value, word.substr(0, equals + 1), word.substr(equals + 1));
            return;
        }
        const CompletedOption *before =
            typed_.before.empty() ? nullptr : option_of(command, typed_.before.back());
        if (before && before->value.kind != CompletedValue::none)
            propose_value(before->value, "", word);
        else if (word.starts_with('-'))
            propose_options(command);
        else if (!command.commands.empty())
            propose_commands(command, &command == &root);
        else
            propose_value(command.argument, "", word);
    }

  private:
    // The command that the words before lead to.
    const CompletedCommand &reached(const CompletedCommand &root) const {
        const CompletedCommand *command = &root;
        for (const std::string &word : typed_.before)
            for (const CompletedCommand &sub : command->commands)
                if (sub.name == word) {
                    command = &sub;
                    break;
                }
        return *command;
    }

    static const CompletedOption *option_of(const CompletedCommand &command,
                                            const std::string &word) {
        for (const CompletedOption &option : command.options)
            for (const std::string &name : names_of(option))
                if (name == word)
                    return &option;
        return nullptr;
    }

    // `front` stays before `text`, whose part `shown` stands in a list.
    void propose(const std::string &front, const std::string &text, const std::string &shown) {
        const std::string word = written(front + text, typed_.quote);
        const std::string quote(typed_.quote ? 1 : 0, typed_.quote);
        const std::string end = text.ends_with('/') ? "" : quote + " ";
        kestu_error_clear(kestu_edit_propose(proposals_, word.c_str(), shown.c_str(), end.c_str()));
    }

    void propose_if(const std::string &front, const std::string &typed, const std::string &text) {
        if (text.starts_with(typed))
            propose(front, text, text);
    }

    void propose_options(const CompletedCommand &command) {
        for (const CompletedOption &option : command.options)
            for (const std::string &name : names_of(option))
                propose_if("", typed_.last, name);
    }

    // A shell in a shell is refused, and so not offered.
    void propose_commands(const CompletedCommand &command, bool in_front) {
        for (const CompletedCommand &sub : command.commands)
            if (!in_front || sub.name != "shell")
                propose_if("", typed_.last, sub.name);
    }

    void propose_value(const CompletedValue &value, const std::string &front,
                       const std::string &word) {
        for (const std::string &choice : value.choices)
            propose_if(front, word, choice);
        if (value.kind == CompletedValue::files || value.kind == CompletedValue::folders ||
            value.kind == CompletedValue::command)
            propose_files(front, word, value.kind == CompletedValue::folders);
    }

    void propose_files(const std::string &front, const std::string &word, bool only_folders) {
        const std::string folder = word.substr(0, word.rfind('/') + 1);
        const std::string begin = word.substr(folder.size());
        std::vector<std::string> names;
        std::error_code failed;
        for (fs::directory_iterator at(folder.empty() ? "." : folder, failed), end;
             !failed && at != end; at.increment(failed)) {
            const std::string name = at->path().filename();
            std::error_code unknown;
            const bool is_folder = at->is_directory(unknown);
            if (name.starts_with(begin) && (name[0] != '.' || !begin.empty()) &&
                (is_folder || !only_folders))
                names.push_back(name + (is_folder ? "/" : ""));
        }
        std::sort(names.begin(), names.end());
        for (const std::string &name : names)
            propose(front, folder + name, name);
    }

    kestu_edit_proposals_t *proposals_;
    const TypedWords typed_;
};

} // namespace

void complete(kestu_edit_proposals_t *proposals, const std::string &front, const Shell &shell) {
    const TypedWords typed = shell.words().typed(front);
    if (typed.begin != front.npos)
        Completion(proposals, typed).propose_word(shell.root());
}

} // namespace program
