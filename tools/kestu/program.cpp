#include "program.hpp"

#include "kestu_lib.h"

#include <cstdio>
#include <iostream>

namespace program {
namespace {

constexpr const char *description =
    "Inspect grayscale TIFF scans, processors, files and texts with libkestu.";

int print_line(const char *line, void *baton) {
    return std::fprintf(stderr, "kestu: %s%s\n", static_cast<const char *>(baton), line);
}

void set_up(CLI::App &app, Outcome &outcome) {
    app.name("kestu");
    app.set_version_flag("--version", std::string("kestu ") + kestu_version_string());
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    app.get_formatter()->column_width(34);
    add_image_commands(app, outcome);
    add_cpu_commands(app, outcome);
    add_sum_command(app, outcome);
    add_find_command(app, outcome);
    add_escape_commands(app, outcome);
    add_base_command(app, outcome);
    add_shell_command(app, outcome);
}

// Every command answers --version as the program does.
void add_version_everywhere(CLI::App &app, const std::string &version) {
    for (CLI::App *command : app.get_subcommands({})) {
        command->set_version_flag("--version", version);
        add_version_everywhere(*command, version);
    }
}

} // namespace

bool Outcome::ok(kestu_error_t *err, const std::string &subject) {
    if (!err)
        return true;
    std::string prefix = subject.empty() ? "" : subject + ": ";
    std::fflush(stdout);
    kestu_error_clear(kestu_error_handle(err, print_line, prefix.data()));
    fail();
    return false;
}

void Outcome::fail(const std::string &message) {
    std::fflush(stdout);
    std::fprintf(stderr, "kestu: %s\n", message.c_str());
    fail();
}

std::vector<Command> commands() {
    Outcome unused;
    CLI::App app;
    set_up(app, unused);
    std::vector<Command> all;
    for (const CLI::App *command : app.get_subcommands({}))
        all.push_back({command->get_name(), command->get_description()});
    return all;
}

int run(const std::vector<std::string> &arguments) {
    Outcome outcome;
    CLI::App app(description);
    set_up(app, outcome);
    add_version_everywhere(app, app.version());
    try {
        // The parser takes its arguments from the back.
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? exit_ok : exit_usage;
    }
    std::cout.flush();
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
        outcome.fail("standard output cannot be written");
    return outcome.status();
}

} // namespace program
