// The frame of the program: parsing, exit status, and how commands report failures.
#pragma once

#include "common/parser.hpp"

#include "kestu_error.h"

#include <string>
#include <string_view>
#include <vector>

namespace program {

struct CompletedCommand;

enum ExitStatus { exit_ok = 0, exit_failure = 1, exit_usage = 2 };

// Says something on standard error, in one line behind the program's name and the place.
void say(const std::string &message);

// The place in a script ("FILE:LINE: ") of what runs from now on, in child processes too; empty
// when there is none.
void set_place(const std::string &place);

// What one run of the program has come to. Commands lower it; it never improves.
class Outcome {
  public:
    // True on success. A failure is told behind `subject` (a file, or empty), and released: its
    // cause in one line, or all lines of the chain.
    bool ok(kestu_error_t *err, const std::string &subject = "");
    void tell_chains() { tells_chains_ = true; }

    // Says what went wrong where there is no chain.
    void fail(const std::string &message);

    // A failure that somebody else has told about.
    void fail() { exit_status_ = exit_failure; }
    void fail_with(int status) { exit_status_ = status; }

    int status() const { return exit_status_; }

  private:
    int exit_status_ = exit_ok;
    bool tells_chains_ = false;
};

// Runs the command that the arguments (without the program's name) name and returns the exit
// status.
int run(const std::vector<std::string> &arguments);

// The program with all its commands, in the order of its help.
CompletedCommand commands();

// Each adds a command with all below it. The callbacks report to `outcome`, which outlives `app`.
void add_image_commands(CLI::App &app, Outcome &outcome);
void add_cpu_commands(CLI::App &app, Outcome &outcome);
void add_sum_command(CLI::App &app, Outcome &outcome);
void add_find_command(CLI::App &app, Outcome &outcome);
void add_escape_command(CLI::App &app, Outcome &outcome);
void add_unescape_command(CLI::App &app, Outcome &outcome);
void add_base_command(CLI::App &app, Outcome &outcome);
void add_shell_command(CLI::App &app, Outcome &outcome);
void add_completion_command(CLI::App &app, Outcome &outcome);

} // namespace program
