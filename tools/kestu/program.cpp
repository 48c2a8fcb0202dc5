#include "program.hpp"

#include "common/arguments.hpp"
#include "common/help.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/usage.hpp"
#include "common/values.hpp"
#include "completion/model.hpp"
#include "examples.hpp"

#include "kestu_lib.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <unistd.h>

namespace program {
namespace {

constexpr const char *description =
    "Inspect grayscale TIFF scans, processors, files and texts with libkestu.";

using Words = std::vector<std::string>;

const Words colour_choices = {"auto", "always", "never"};

std::string place; // in a script

// What every command takes, before or after its name.
void add_common_options(CLI::App &command, Outcome &outcome) {
    command.set_help_flag("-h,--help", "Print this help and exit");
    command.set_version_flag("-V,--version", std::string("kestu ") + kestu_version_string(),
                             "Print the version and exit");
    command.add_flag_callback(
        "--verbose", [&outcome] { outcome.tell_chains(); },
        "Tell errors with all that led to them");
    command
        .add_option_function<std::string>("--color", choose_colour,
                                          "When to use colour; auto: on terminals, unless NO_COLOR "
                                          "is set")
        ->type_name(alternatives(colour_choices))
        ->check(one_of(colour_choices));
}

// What is said twice counts as it is said last, and each name takes one value.
void complete(CLI::App &command, Outcome &outcome) {
    for (CLI::Option *option : command.get_options()) {
        if (option->get_items_expected_max() == 0)
            continue;
        option->transform(CLI::Validator(
            [](std::string &value) {
                value = unmarked(value);
                return std::string();
            },
            ""));
        if (!option->get_positional() && !takes_the_rest(option->get_name()))
            option->allow_extra_args(false);
        if (option->get_items_expected_max() == 1)
            option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
    add_common_options(command, outcome);
    if (const std::string examples = examples_of(path_of(command)); !examples.empty())
        command.footer(command.get_footer() + "\n\n" + examples);
    for (CLI::App *sub : command.get_subcommands({}))
        complete(*sub, outcome);
}

// The help of the command that the words name.
void print_help(const CLI::App &app, const Words &words, Outcome &outcome) {
    const CLI::App *command = &app;
    for (const std::string &word : words) {
        const auto found =
            command->get_subcommands([&](const CLI::App *sub) { return sub->check_name(word); });
        if (found.empty()) {
            say(unknown_command(*command, word));
            return outcome.fail_with(exit_usage);
        }
        command = found.front();
    }
    print(help_page(*command, look_of_output()));
}

void add_help_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("help", "Print the help of a command");
    auto words = std::make_shared<Words>();
    command->add_option("COMMAND", *words, "The command's name, in one word or more");
    command->callback([words, &app, &outcome] { print_help(app, *words, outcome); });
}

using Add = void(CLI::App &, Outcome &);

// The commands in the order of the help. Those without a name here show all others.
struct Command {
    std::string_view name;
    Add *add;
};

constexpr Command all_commands[] = {
    {"image", add_image_commands},  {"cpu", add_cpu_commands},
    {"sum", add_sum_command},       {"find", add_find_command},
    {"escape", add_escape_command}, {"unescape", add_unescape_command},
    {"base", add_base_command},     {"shell", add_shell_command},
    {"", add_completion_command},   {"", add_help_command},
};

// The command whose name is the first word, behind options at most; else null.
Add *command_in(const Words &arguments) {
    for (const std::string &argument : arguments) {
        if (argument.starts_with('-'))
            continue;
        const auto *found = std::find_if(
            std::begin(all_commands), std::end(all_commands),
            [&](const Command &command) { return !argument.empty() && command.name == argument; });
        return found == std::end(all_commands) ? nullptr : found->add;
    }
    return nullptr;
}

// To add all commands takes longer than most take to run, so the one that is known is added alone.
void set_up(CLI::App &app, Outcome &outcome, const Words &arguments) {
    app.name("kestu");
    app.require_subcommand(1);
    if (Add *add = command_in(arguments))
        add(app, outcome);
    else
        for (const Command &command : all_commands)
            command.add(app, outcome);
    complete(app, outcome);
}

void parse(CLI::App &app, const Words &arguments, Outcome &outcome) {
    try {
        Words words = marked(arguments);
        std::reverse(words.begin(), words.end()); // the parser takes them from the back
        app.parse(std::move(words));
    } catch (const CLI::CallForHelp &help) {
        if (!names_no_command(app))
            return print(help_page(chosen(app), look_of_output()));
        say(fault_in_usage(app, help));
        outcome.fail_with(exit_usage);
    } catch (const CLI::CallForVersion &version) {
        print(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError &error) {
        if (lacks_command(app) && place.empty())
            std::fputs(short_help(chosen(app), look_of(STDERR_FILENO)).c_str(), stderr);
        else
            say(fault_in_usage(app, error));
        outcome.fail_with(exit_usage);
    } catch (const std::bad_alloc &) {
        outcome.fail("there is not enough memory");
    }
}

int print_line(const char *line, void *baton) {
    std::string message = static_cast<const char *>(baton) + std::string(line);
    if (message.ends_with(' '))
        message.pop_back();
    say(message);
    return 0;
}

// The library's messages are sentences; here they follow a file's name.
std::string as_clause(std::string message) {
    if (message.size() > 1 && std::islower(static_cast<unsigned char>(message[1])))
        message[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(message[0])));
    if (message.ends_with('.'))
        message.pop_back();
    return message;
}

// The cause of a failure: what the program says of it, or else what the library found first.
std::string cause_of(kestu_error_t *err) {
    if (err->type == KESTU_ERROR_PLAIN && err->message)
        return err->message;
    const kestu_error_t &cause = *kestu_error_root_cause(err);
    const char *message = cause.message ? cause.message : kestu_error_text(cause.code);
    return message ? as_clause(message) : text("failed with error %d", cause.code);
}

} // namespace

void say(const std::string &message) {
    std::fflush(stdout);
    const std::string name = alarming("kestu:", look_of(STDERR_FILENO));
    std::fprintf(stderr, "%s %s\n", name.c_str(), printable((place + message).c_str()).c_str());
}

void set_place(const std::string &where) {
    place = where;
}

bool Outcome::ok(kestu_error_t *err, const std::string &subject) {
    if (!err)
        return true;
    std::string prefix = subject.empty() ? "" : subject + ": ";
    if (tells_chains_)
        kestu_error_handle(err, print_line, prefix.data());
    else
        say(prefix + cause_of(err));
    kestu_error_clear(err);
    fail();
    return false;
}

void Outcome::fail(const std::string &message) {
    say(message);
    fail();
}

CompletedCommand commands() {
    Outcome unused;
    CLI::App app;
    set_up(app, unused, {});
    return completed(app);
}

int run(const std::vector<std::string> &arguments) {
    Outcome outcome;
    CLI::App app(description);
    set_up(app, outcome, arguments);
    parse(app, arguments, outcome);
    errno = print_failure();
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        outcome.fail(std::string("standard output: cannot write") +
                     (errno ? std::string(": ") + std::strerror(errno) : ""));
    return outcome.status();
}

} // namespace program
