// What standard output can show.
#pragma once

#include <string>

namespace program {

struct Look {
    int width = 80;       // columns
    bool unicode = false; // characters beyond ASCII
    bool colour = false;
};

// The look of standard output: the terminal's width (or COLUMNS), the character set of the user's
// locale variables, colour on a terminal unless NO_COLOR is set.
Look look_of_output();

} // namespace program
