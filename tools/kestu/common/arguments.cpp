#include "common/arguments.hpp"

namespace program {
namespace {

constexpr char mark = '\1';

bool is_list(const std::string &word) {
    return word.starts_with('[') || word.starts_with(mark);
}

} // namespace

// The parser ends the values of an option at "--", and has no other use for it here.
std::vector<std::string> marked(const std::vector<std::string> &arguments) {
    std::vector<std::string> words;
    bool only_words = false;
    bool in_command = false;
    for (const std::string &word : arguments) {
        if (only_words || (in_command && word != ";")) {
            words.push_back(mark + word);
        } else if (in_command) {
            words.emplace_back("--");
            in_command = false;
        } else if (word == "--") {
            only_words = true;
        } else if (word.starts_with("--") && word.ends_with('=')) {
            words.push_back(word.substr(0, word.size() - 1));
            words.emplace_back(1, mark);
        } else {
            words.push_back(is_list(word) ? mark + word : word);
            in_command = takes_the_rest(word);
        }
    }
    return words;
}

std::string unmarked(const std::string &word) {
    return word.starts_with(mark) ? word.substr(1) : word;
}

bool takes_the_rest(const std::string &option) {
    return option == "-x" || option == "--exec";
}

} // namespace program
