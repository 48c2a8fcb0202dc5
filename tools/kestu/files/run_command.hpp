// Other programs, run for what is found.
#pragma once

#include <string>
#include <vector>

namespace program {

// Runs `command` with `path` in place of "{}", or behind it when there is none, and waits. Returns
// its exit status, 128 and more when a signal ended it, and -1, with errno, when it cannot be run.
int run_for_path(const std::vector<std::string> &command, const std::string &path);

} // namespace program
