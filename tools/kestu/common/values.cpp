#include "common/values.hpp"

#include "common/text.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace program {
namespace {

template <typename Number>
std::optional<Number> parsed(const std::string &value) {
    const char *begin = value.data() + (value.starts_with('+') ? 1 : 0);
    const char *end = value.data() + value.size();
    Number number{};
    const auto [rest, failure] = std::from_chars(begin, end, number);
    return failure == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

// Refuses a value with words that follow it.
std::string refused(const std::string &value, const std::string &expected) {
    return "'" + printable(value.c_str()) + "' is not " + expected;
}

template <typename Accept>
CLI::Validator number_that(Accept accept, const char *expected) {
    return CLI::Validator(
        [=](std::string &value) {
            const auto given = parsed<double>(value);
            return given && std::isfinite(*given) && accept(*given) ? std::string()
                                                                    : refused(value, expected);
        },
        "");
}

} // namespace

// The parser of options would take digits after a zero as octal ones.
CLI::Validator whole_number(long long least, long long most) {
    return CLI::Validator(
        [=](std::string &value) {
            const auto given = parsed<long long>(value);
            if (!given || *given < least || *given > most)
                return refused(value, text("a whole number from %lld to %lld", least, most));
            value = std::to_string(*given);
            return std::string();
        },
        "");
}

CLI::Validator number() {
    return number_that([](double) { return true; }, "a number");
}

CLI::Validator positive_number() {
    return number_that([](double x) { return x > 0; }, "a number above 0");
}

CLI::Validator not_negative_number() {
    return number_that([](double x) { return x >= 0; }, "a number from 0 on");
}

CLI::Validator one_of(const std::vector<std::string> &words) {
    return CLI::Validator(
        [=](std::string &value) {
            return std::find(words.begin(), words.end(), value) != words.end()
                       ? std::string()
                       : refused(value, "one of " + alternatives(words));
        },
        "");
}

std::string alternatives(const std::vector<std::string> &words) {
    std::string all;
    for (const std::string &word : words)
        all += (all.empty() ? "" : "|") + word;
    return all;
}

std::vector<std::string> words_of(const std::string &alternatives) {
    return alternatives.find('|') == alternatives.npos ? std::vector<std::string>()
                                                       : CLI::detail::split(alternatives, '|');
}

} // namespace program
