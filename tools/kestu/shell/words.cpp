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

void Words::begin_word(size_t at) {
    if (state_ == State::between) {
        words_.emplace_back();
        begin_ = at;
    }
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
    begin_word(at);
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

void Words::scan(const std::string &row) {
    goes_on_ = false;
    begin_ = row.npos;
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
}

void Words::add(const std::string &row) {
    scan(row);
    if (state_ == State::inside && !goes_on_)
        end_word();
    else if (state_ == State::single || state_ == State::quoted)
        put('\n', false);
}

TypedWords Words::typed(const std::string &text) const {
    Words words = *this;
    size_t begin = 0;
    for (size_t end; (end = text.find('\n', begin)) != text.npos; begin = end + 1) {
        words.add(text.substr(begin, end - begin));
        if (!words.incomplete())
            words = Words();
    }
    const std::string row = text.substr(begin);
    words.scan(row);
    TypedWords typed;
    typed.begin = text.size() - (words.goes_on_ ? 1 : 0);
    typed.behind_command = !words.rest_.empty();
    if (typed.behind_command) {
        typed.last = words.rest_.substr(words.rest_.find_last_of(" \t|>") + 1);
        typed.begin -= typed.last.size();
    } else if (words.state_ != State::between) {
        typed.last = std::move(words.words_.back().text);
        words.words_.pop_back();
        // A word that began in another row is left alone.
        typed.begin = words.begin_ == row.npos ? text.npos : begin + words.begin_;
        typed.quote = words.state_ == State::quoted   ? '"'
                      : words.state_ == State::single ? '\''
                                                      : '\0';
    }
    for (Word &word : words.words_)
        typed.before.push_back(std::move(word.text));
    return typed;
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
