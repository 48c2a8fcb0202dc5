#include "files/find_filters.hpp"

#include "common/text.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

namespace program {
namespace {

CLI::Validator accepting(bool (*accepts)(const std::string &), const char *expected) {
    return CLI::Validator(
        [=](std::string &value) {
            return accepts(value) ? std::string()
                                  : "'" + printable(value.c_str()) + "' is not " + expected;
        },
        "");
}

// Where the brackets end that begin at `at`; beyond the pattern when they do not.
size_t end_of_brackets(std::string_view pattern, size_t at) {
    while (at < pattern.size() && pattern[at] != ']')
        at += pattern[at] == '\\' ? 2 : 1;
    return at;
}

// What is wrong with a pattern; empty when nothing is.
std::string fault_of(std::string_view pattern) {
    for (size_t at = 0; at < pattern.size(); ++at)
        if (pattern[at] == '\\') {
            if (++at == pattern.size())
                return "ends in a lone backslash";
        } else if (pattern[at] == '[') {
            at = end_of_brackets(pattern, at);
            if (at >= pattern.size())
                return "lacks its ]";
        }
    return "";
}

struct Unit {
    std::string_view name;
    long long factor;
};

constexpr long long k = 1000, ki = 1024;
constexpr Unit size_units[] = {
    {"", 1},           {"b", 1},   {"k", k},       {"m", k *k},        {"g", k *k *k},
    {"t", k *k *k *k}, {"ki", ki}, {"mi", ki *ki}, {"gi", ki *ki *ki}, {"ti", ki *ki *ki *ki}};
constexpr Unit time_units[] = {{"s", 1},         {"sec", 1},      {"min", 60},     {"m", 60},
                               {"h", 3600},      {"hour", 3600},  {"hours", 3600}, {"d", 86400},
                               {"day", 86400},   {"days", 86400}, {"w", 604800},   {"week", 604800},
                               {"weeks", 604800}};

// A whole number with the name of its unit, in either case.
template <size_t N>
std::optional<long long> measured(std::string_view given, const Unit (&units)[N]) {
    long long number = 0;
    const auto [rest, failure] = std::from_chars(given.data(), given.data() + given.size(), number);
    if (failure != std::errc() || number < 0)
        return std::nullopt;
    const std::string name = CLI::detail::to_lower(std::string(rest, given.data() + given.size()));
    for (const Unit &unit : units)
        if (unit.name == name && number <= std::numeric_limits<long long>::max() / unit.factor)
            return number * unit.factor;
    return std::nullopt;
}

std::optional<time_t> calendar_time(const std::string &given) {
    for (const char *format : {"%Y-%m-%d", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        tm parts{};
        parts.tm_isdst = -1;
        const char *end = strptime(given.c_str(), format, &parts);
        if (end && !*end)
            return std::mktime(&parts);
    }
    return std::nullopt;
}

} // namespace

CLI::Validator pattern_list() {
    return CLI::Validator(
        [](std::string &value) {
            bool any = false;
            for (const std::string &pattern : CLI::detail::split(value, ';')) {
                any = any || !pattern.empty();
                if (const std::string fault = fault_of(pattern); !fault.empty())
                    return "'" + printable(pattern.c_str()) + "' " + fault;
            }
            return any ? std::string() : "there is no pattern in '" + value + "'";
        },
        "");
}

std::optional<SizeRange> parse_size(const std::string &given) {
    const char sign = given.empty() ? '\0' : given[0];
    const bool is_bound = sign == '+' || sign == '-';
    const auto bytes = measured(std::string_view(given).substr(is_bound ? 1 : 0), size_units);
    if (!bytes)
        return std::nullopt;
    return SizeRange{.least = sign == '-' ? 0 : *bytes,
                     .most = sign == '+' ? std::numeric_limits<off_t>::max() : *bytes};
}

CLI::Validator file_size() {
    return accepting([](const std::string &value) { return parse_size(value).has_value(); },
                     "a size as 512, +10k or -2Mi");
}

std::optional<time_t> parse_time(const std::string &given, time_t now) {
    if (const auto seconds = measured(given, time_units))
        return now - *seconds;
    return calendar_time(given);
}

CLI::Validator point_in_time() {
    return accepting([](const std::string &value) { return parse_time(value, 0).has_value(); },
                     "a time as 10h, 3d or 2026-11-22");
}

bool FileFilter::wants(const std::string &type) const {
    return std::find(types.begin(), types.end(), type) != types.end();
}

// The system is asked only where the answer is needed.
bool FileFilter::passes(const std::string &path) const {
    if (sizes.empty() && !changed_since && wants("f") && wants("l") && wants("d"))
        return true;
    struct stat state;
    if (lstat(path.c_str(), &state) != 0)
        return false;
    if (!wants(S_ISDIR(state.st_mode) ? "d" : S_ISLNK(state.st_mode) ? "l" : "f"))
        return false;
    const auto fits = [&](const SizeRange &size) {
        return S_ISREG(state.st_mode) && state.st_size >= size.least && state.st_size <= size.most;
    };
    if (!std::all_of(sizes.begin(), sizes.end(), fits))
        return false;
    return !changed_since || state.st_mtime >= *changed_since;
}

} // namespace program
