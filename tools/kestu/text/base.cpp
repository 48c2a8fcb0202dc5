// `kestu base`: integers in other bases.
#include "common/text.hpp"
#include "common/values.hpp"
#include "program.hpp"

#include "kestu_escape.h"

#include <cstdio>
#include <memory>

namespace program {
namespace {

constexpr int lowest_base = 2;
constexpr int highest_base = 62;

struct BaseOptions {
    int to = 0;
    int from = 10;
    std::vector<std::string> values;
};

void convert(const BaseOptions &options, const std::string &digits, Outcome &outcome) {
    const std::string shown = printable(digits.c_str());
    char *end = nullptr;
    int64_t value = 0;
    if (!outcome.ok(kestu_str_base62_to_int64(digits.c_str(), &end, options.from, &value), shown))
        return;
    if (end == digits.c_str() || *end)
        return outcome.fail(text("'%s' is not a number in base %d", shown.c_str(), options.from));
    char number[2 + 64];
    kestu_str_int64_to_base62(value, options.to, number, sizeof number);
    std::puts(number);
}

} // namespace

void add_base_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("base", "Write integers in another base");
    auto options = std::make_shared<BaseOptions>();
    const CLI::Validator bases = whole_number(lowest_base, highest_base);
    command->add_option("N", options->to, "Base of the results, with the digits 0-9, A-Z, a-z")
        ->required()
        ->check(bases);
    command->add_option("VALUE", options->values, "Integers of 64 bits")->required();
    command->add_option("--from", options->from, "Base of the values")
        ->capture_default_str()
        ->type_name("BASE")
        ->check(bases);
    command->callback([options, &outcome] {
        for (const std::string &value : options->values)
            convert(*options, value, outcome);
    });
}

} // namespace program
