// The pages of --help.
#pragma once

#include "common/parser.hpp"
#include "common/terminal.hpp"

#include <string>

namespace program {

// "kestu image info".
std::string path_of(const CLI::App &command);

// The page of a command: its purpose, how it is called, its arguments and options, and its footer.
// Paragraphs of the footer are filled; a line that begins with "$ " is an example, and the
// paragraph behind it tells what it does.
std::string help_page(const CLI::App &command, const Look &look);

// The beginning of this page, for those who have named no command.
std::string short_help(const CLI::App &command, const Look &look);

// An option as its user writes it, with the name of its value: "--width COLUMNS".
std::string usage_of(const CLI::Option &option);

} // namespace program
