// Formatted text as strings, by the library's own engine.
#pragma once

#include "kestu_defs.h"

#include <string>

namespace program {

// As kestu_str_snprintf; a text that cannot be formatted is empty.
std::string text(const char *format, ...) KESTU_PRINTF(1, 2);

// "1 row", "2 rows".
std::string counted(unsigned long long count, const char *thing);

// `what` as it can be shown on a terminal: control characters stand as "\x1b".
std::string printable(const char *what);

} // namespace program
