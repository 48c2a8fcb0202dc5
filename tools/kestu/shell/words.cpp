#include "shell/words.hpp"

#include <string_view>
#include <utility>

#include <glob.h>

namespace program {
namespace {

constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view wildcards = "*?[";

bool is_in(char c, std::string_view set) {
    return set.find(c) != set.npos;
}

std::vector<std::string> files_like(const std::string &pattern) {
    std::vector<std::string> files;
    glob_t found = {};
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0)
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    return files;
}

} // namespace

void Words::begin_word() {
    if (state_ == State::between)
        words_.emplace_back();
    state_ = State::inside;
}

void Words::end_word() {
    state_ = State::between;
}

void Words::put(char c, bool plain) {
    Word &word = words_.back();
    word.text += c;
    if (!plain && is_in(c, "*?[]\\"))
        word.pattern += '\\';
    word.pattern += c;
    word.matches = word.matches || (plain && is_in(c, wildcards));
}

// Outside of quotes; returns the place behind what it took.
size_t Words::take_plain(const std::string &row, size_t at) {
    const char c = row[at];
    if (is_in(c, blanks)) {
        end_word();
        return at + 1;
    }
    if (c == '|' || c == '>' || (c == '#' && state_ == State::between)) {
        end_word();
        if (c != '#')
            rest_ = row.substr(at);
        return row.size();
    }
    if (c == '\\' && at + 1 == row.size()) {
        goes_on_ = true;
        return at + 1;
    }
    begin_word();
    if (c == '\\')
        put(row[++at], false);
    else if (c == '\'')
        state_ = State::single;
    else if (c == '"')
        state_ = State::quoted;
    else
        put(c, true);
    return at + 1;
}

void Words::add(const std::string &row) {
    goes_on_ = false;
    for (size_t at = 0; at < row.size();) {
        const char c = row[at];
        if (state_ == State::between || state_ == State::inside) {
            at = take_plain(row, at);
            continue;
        }
        const char end = state_ == State::single ? '\'' : '"';
        const bool escapes = state_ == State::quoted && c == '\\' && at + 1 < row.size() &&
                             is_in(row[at + 1], "\"\\$`");
        if (c == end)
            state_ = State::inside;
        else
            put(escapes ? row[++at] : c, false);
        ++at;
    }
    if (state_ == State::inside && !goes_on_)
        end_word();
    else if (state_ == State::single || state_ == State::quoted)
        put('\n', false);
}

std::vector<std::string> Words::take() {
    std::vector<std::string> all;
    for (const Word &word : std::exchange(words_, {})) {
        const std::vector<std::string> files =
            word.matches ? files_like(word.pattern) : std::vector<std::string>();
        all.insert(all.end(), files.begin(), files.end());
        if (files.empty())
            all.push_back(word.text);
    }
    state_ = State::between;
    goes_on_ = false;
    return all;
}

std::string Words::take_rest() {
    return std::exchange(rest_, {});
}

} // namespace program
