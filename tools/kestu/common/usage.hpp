// What is wrong with a command line.
#pragma once

#include "common/parser.hpp"

#include <string>

namespace program {

// The command that was chosen by the words that have been parsed.
const CLI::App &chosen(const CLI::App &app);

// Whether the words end where a command is expected.
bool lacks_command(const CLI::App &app);

// Whether a word stands there that is none.
bool names_no_command(const CLI::App &app);

// What is wrong, in one line that tells where help is to be found.
std::string fault_in_usage(const CLI::App &app, const CLI::ParseError &error);

// The same for a word that is no command of `command`.
std::string unknown_command(const CLI::App &command, const std::string &word);

} // namespace program
