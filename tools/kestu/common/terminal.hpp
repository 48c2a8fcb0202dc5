// What standard output and standard error can show.
#pragma once

#include <string>

namespace program {

struct Look {
    int width = 80;       // columns
    bool unicode = false; // characters beyond ASCII
    bool colour = false;
};

// The look of the stream with this descriptor: the terminal's width (or COLUMNS), the character set
// of the user's locale variables, colour as it was chosen, or else on a terminal unless NO_COLOR is
// set.
Look look_of(int stream);
Look look_of_output();

// Chooses colour for all streams: "always", "never" or, as at first, "auto".
void choose_colour(const std::string &when);

// `what` between the terminal's codes of bold text, of failures, and of success, where `look` has
// colour.
std::string bold(const std::string &what, const Look &look);
std::string alarming(const std::string &what, const Look &look);
std::string reassuring(const std::string &what, const Look &look);

} // namespace program
