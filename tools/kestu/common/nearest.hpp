// What a word that nobody knows was meant to be.
#pragma once

#include <string>
#include <vector>

namespace program {

// The first of `names` that is nearest to `word`, in either case; null when none is near.
const std::string *nearest(const std::string &word, const std::vector<std::string> &names);

} // namespace program
