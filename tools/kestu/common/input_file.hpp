// Files that the program reads.
#pragma once

#include "kestu_error.h"

#include <functional>
#include <string>

namespace program {

// Calls `read` with the name of the file at `path`, which for "-" is one that holds what standard
// input does. A failure gets, in front, what the system tells of its cause.
kestu_error_t *read_file(const std::string &path,
                         const std::function<kestu_error_t *(const char *readable)> &read);

// A file, or standard input for "-", as messages name it.
std::string name_of_input(const std::string &path);

// A failure that is told in these words alone, with `cause` behind it for those who ask for more.
kestu_error_t *in_words(const std::string &words, kestu_error_t *cause = nullptr);

// The words for the system's last failure: "cannot open: Permission denied".
std::string failed_to(const char *action);

} // namespace program
