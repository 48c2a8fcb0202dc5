// The two halves of a path as views into it: no copy, no failure.
#pragma once

#include <string_view>

namespace kestu {

// The last component without slashes behind it; "." for an empty path, "/" for one of slashes only.
std::string_view last_component(std::string_view path);

// What stands before the last component; "." when nothing does, "/" when only slashes do.
std::string_view directory_part(std::string_view path);

} // namespace kestu
