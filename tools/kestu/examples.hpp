// Examples of what to type.
#pragma once

#include <string>

namespace program {

// The examples of the command with this name ("kestu image info"), as its footer holds them; empty
// when there are none.
std::string examples_of(const std::string &command);

} // namespace program
