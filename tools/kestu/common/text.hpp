// Texts: formatted by the library's own engine, and put into pages.
#pragma once

#include "kestu_defs.h"

#include <cstddef>
#include <string>

namespace program {

// The columns before the values of a page.
inline constexpr size_t page_margin = 22;

// As kestu_str_snprintf; a text that cannot be formatted is empty.
std::string text(const char *format, ...) KESTU_PRINTF(1, 2);

// "1 row", "2 rows".
std::string counted(unsigned long long count, const char *thing);

// Adds "  Field               value" to a page of such lines.
void add_field(std::string &page, const char *field, const std::string &value);

// Writes to standard output, zero bytes included. Failures show when the program ends.
void print(const std::string &what);

// Why it could not, the first time that it could not: a value of errno, or 0.
int print_failure();

// `what` as it can be shown on a terminal: control characters stand as "\x1b".
std::string printable(const char *what);

} // namespace program
