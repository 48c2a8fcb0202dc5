// The words of a command line, made ready for the parser.
#pragma once

#include <string>
#include <vector>

namespace program {

// The arguments, with a mark in front of those that the parser shall take for nothing but words:
// what stands behind "--", what belongs to a command to run, "[a]", which it takes for a list, and
// the value of "--name=", which it misses.
std::vector<std::string> marked(const std::vector<std::string> &arguments);

// A word as it was typed.
std::string unmarked(const std::string &word);

// Whether the values of this option go on to the end, or to ";".
bool takes_the_rest(const std::string &option);

} // namespace program
