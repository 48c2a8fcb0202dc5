// Files that the program makes.
#pragma once

#include "kestu_error.h"

#include <functional>
#include <string>

namespace program {

// Makes the file at `path`, which appears under its name when it is whole, in place of a file of
// that name; a failure leaves what was there. What is no regular file, as a device, is written in
// place, and "-" is standard output. `write` puts the content into the file whose name it is given.
kestu_error_t *write_new_file(const std::string &path,
                              const std::function<kestu_error_t *(const char *partial)> &write);

// The same for content that is there already.
kestu_error_t *write_new_file(const std::string &path, const std::string &content);

// Prints a message about the file at `path`: on standard error when standard output is the file.
void print_about(const std::string &path, const std::string &message);

// A file, or standard output for "-", as messages name it.
std::string name_of_output(const std::string &path);

} // namespace program
