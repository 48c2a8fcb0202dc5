// `kestu base`: integers in other bases.
#include "common/text.hpp"
#include "common/values.hpp"
#include "program.hpp"

#include "kestu_escape.h"

#include <CLI/CLI.hpp>

#include <cctype>
#include <iostream>
#include <memory>
#include <optional>

namespace program {
namespace {

constexpr int lowest_base = 2;
constexpr int highest_base = 62;
constexpr int last_base_of_one_case = 36; // above it the small letters are digits of their own

struct BaseOptions {
    int to = 0;
    std::optional<int> from;
    std::vector<std::string> values;
};

// The value of a digit; a base or more for what is none.
int digit_value(char c, int base) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'z')
        return c - 'a' + (base <= last_base_of_one_case ? 10 : 36);
    return base;
}

struct Prefix {
    char letter;
    int base;
};

constexpr Prefix prefixes[] = {{'x', 16}, {'o', 8}, {'b', 2}};

// Takes a prefix that agrees with the base that is given, and tells the base.
int take_prefix(std::string_view &digits, std::optional<int> from) {
    for (const auto &[letter, base] : prefixes)
        if (digits.size() > 2 && digits[0] == '0' &&
            std::tolower(static_cast<unsigned char>(digits[1])) == letter &&
            from.value_or(base) == base) {
            digits.remove_prefix(2);
            return base;
        }
    return from.value_or(10);
}

struct Integer {
    bool negative = false;
    uint64_t magnitude = 0;
    bool fits = true;
};

// Nothing for what is no number in the base, which is told.
std::optional<Integer> parse(std::string_view digits, int &base, std::optional<int> from) {
    Integer number;
    number.negative = digits.starts_with('-');
    if (number.negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    base = take_prefix(digits, from);
    if (digits.empty())
        return std::nullopt;
    for (const char c : digits) {
        const int digit = digit_value(c, base);
        if (digit >= base)
            return std::nullopt;
        number.fits =
            number.fits &&
            !__builtin_mul_overflow(number.magnitude, uint64_t(base), &number.magnitude) &&
            !__builtin_add_overflow(number.magnitude, uint64_t(digit), &number.magnitude);
    }
    constexpr uint64_t least = uint64_t{1} << 63;
    number.fits = number.fits && (!number.negative || number.magnitude <= least);
    return number;
}

// The library writes signed numbers; a larger one is written without its last digit first.
std::string written(const Integer &number, int base) {
    char digits[2 + 64];
    if (number.negative || number.magnitude <= INT64_MAX) {
        const auto value =
            static_cast<int64_t>(number.negative ? -number.magnitude : number.magnitude);
        kestu_str_int64_to_base62(value, base, digits, sizeof digits);
        return digits;
    }
    const auto unsigned_base = static_cast<uint64_t>(base);
    const auto digit = [&](uint64_t value) {
        kestu_str_int64_to_base62(static_cast<int64_t>(value), base, digits, sizeof digits);
        return std::string(digits);
    };
    return digit(number.magnitude / unsigned_base) + digit(number.magnitude % unsigned_base);
}

void convert(const BaseOptions &options, const std::string &digits, Outcome &outcome) {
    int base = 0;
    const auto number = parse(digits, base, options.from);
    if (!number)
        outcome.fail(text("'%s' is not a number in base %d", digits.c_str(), base));
    else if (!number->fits)
        outcome.fail("'" + digits + "' does not fit into 64 bits");
    else
        print(written(*number, options.to) + "\n");
}

void convert_all(const BaseOptions &options, Outcome &outcome) {
    for (const std::string &value : options.values)
        if (value != "-")
            convert(options, value, outcome);
        else
            for (std::string word; std::cin >> word;)
                convert(options, word, outcome);
}

} // namespace

void add_base_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("base", "Write integers in another base");
    auto options = std::make_shared<BaseOptions>();
    const CLI::Validator bases = whole_number(lowest_base, highest_base);
    command->add_option("N", options->to, "Base of the results, with the digits 0-9, A-Z, a-z")
        ->required()
        ->check(bases);
    command
        ->add_option("VALUE", options->values,
                     "Integers of 64 bits, signed or not; - reads them from standard input")
        ->required();
    command
        ->add_option("--from", options->from,
                     "Base of the values; up to 36 in letters of either case [default: what 0x, 0o "
                     "or 0b tells, or 10]")
        ->type_name("BASE")
        ->check(bases);
    command->callback([options, &outcome] { convert_all(*options, outcome); });
}

} // namespace program
