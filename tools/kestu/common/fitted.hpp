// Pages that keep to a number of columns.
#pragma once

#include "common/parser.hpp"

#include <string>

namespace program {

// `page` with lines of more than `width` columns broken at blanks, what follows indented as the
// values of fields are; 0 for no limit.
std::string fitted(const std::string &page, int width);

// The width to keep to: what was asked for, or else the terminal's; 0 when nobody sees columns.
int page_width(int asked);

// The option that asks for it.
void add_page_width(CLI::App &command, int &width);

} // namespace program
