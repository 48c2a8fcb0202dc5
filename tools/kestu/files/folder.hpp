// Folders that are walked.
#pragma once

#include <string>

namespace program {

// Why the folder at `path` cannot be read, behind its name; empty when it can. A link to a folder
// is one where `links_count`.
std::string fault_of_folder(const std::string &path, bool links_count);

} // namespace program
