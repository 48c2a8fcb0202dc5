#include "files/sum_line.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <cctype>

namespace program {
namespace {

struct Escape {
    char character;
    char letter; // behind the backslash
};

constexpr Escape escapes[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};

std::string escaped(const std::string &name) {
    std::string result;
    for (const char c : name) {
        const auto *escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [c](Escape e) { return e.character == c; });
        if (escape == std::end(escapes))
            result += c;
        else
            result += {'\\', escape->letter};
    }
    return result;
}

std::optional<std::string> unescaped(std::string_view name) {
    std::string result;
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '\\') {
            result += name[i];
            continue;
        }
        const char letter = ++i < name.size() ? name[i] : '\0';
        const auto *escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [letter](Escape e) { return e.letter == letter; });
        if (escape == std::end(escapes))
            return std::nullopt;
        result += escape->character;
    }
    return result;
}

bool is_hex(std::string_view digits) {
    return std::all_of(digits.begin(), digits.end(),
                       [](unsigned char c) { return std::isxdigit(c) != 0; });
}

bool skip(std::string_view &line, std::string_view expected) {
    const bool found = line.starts_with(expected);
    if (found)
        line.remove_prefix(expected.size());
    return found;
}

void skip_blanks(std::string_view &line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
}

// What a line says before its name is unescaped.
struct RawLine {
    const SumName *sum = nullptr;
    std::string_view digits;
    std::string_view name;
};

RawLine split_tagged(std::string_view line) {
    for (const SumName &sum : sum_names) {
        std::string_view rest = line;
        if (!skip(rest, sum.tag))
            continue;
        skip(rest, " ");
        const size_t end = rest.rfind(')');
        if (!rest.starts_with('(') || end == rest.npos)
            return {};
        const std::string_view name = rest.substr(1, end - 1);
        rest.remove_prefix(end + 1);
        skip_blanks(rest);
        if (!skip(rest, "="))
            return {};
        skip_blanks(rest);
        return {&sum, rest, name};
    }
    return {};
}

RawLine split_plain(std::string_view line) {
    const size_t size = line.find_first_of(" \t");
    for (const SumName &sum : sum_names)
        if (size == sum.digits && line.size() > size + 2 &&
            (line[size + 1] == ' ' || line[size + 1] == '*'))
            return {&sum, line.substr(0, size), line.substr(size + 2)};
    return {};
}

} // namespace

std::string checked_name(const std::string &name) {
    return name.find('\n') == name.npos ? name : text("\\%s", escaped(name).c_str());
}

std::string format_sum_line(const SumLine &line, bool tagged) {
    const std::string name = escaped(line.name);
    return (name == line.name ? "" : "\\") +
           format_plain_sum_line({line.kind, line.digits, name}, tagged);
}

std::string format_plain_sum_line(const SumLine &line, bool tagged) {
    const auto *sum = std::find_if(std::begin(sum_names), std::end(sum_names),
                                   [&](const SumName &name) { return name.kind == line.kind; });
    return tagged ? sum->tag + (" (" + line.name) + ") = " + line.digits
                  : line.digits + "  " + line.name;
}

std::optional<SumLine> parse_sum_line(std::string_view line) {
    skip_blanks(line);
    const bool has_escapes = skip(line, "\\");
    RawLine raw = split_tagged(line);
    if (!raw.sum)
        raw = split_plain(line);
    if (!raw.sum || raw.digits.size() != raw.sum->digits || !is_hex(raw.digits) || raw.name.empty())
        return std::nullopt;
    std::optional<std::string> name(raw.name);
    if (has_escapes)
        name = unescaped(raw.name);
    if (!name)
        return std::nullopt;
    SumLine result{raw.sum->kind, std::string(raw.digits), *name};
    std::transform(result.digits.begin(), result.digits.end(), result.digits.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

} // namespace program
