// Running the program, or another one, as a user does.
#pragma once

#include <string>
#include <vector>

namespace kestu::test {

struct Ran {
    int status = -1; // exit status, or 128 and the signal
    std::string out; // what it wrote to standard output
    std::string err; // and to standard error
};

// Runs the command (found on PATH unless it is a path) with `input` on standard input and, beside
// the environment of the test, the settings in `environment` ("NAME=value").
Ran run(const std::vector<std::string> &command, const std::string &input = "",
        const std::vector<std::string> &environment = {});

// Runs the kestu program of this build with the given arguments.
Ran run_kestu(std::vector<std::string> arguments, const std::string &input = "",
              const std::vector<std::string> &environment = {});

// A new empty folder that goes, with all that is in it, when the object does.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    std::string operator/(const std::string &name) const { return path + "/" + name; }
    // Writes a file and returns its path.
    std::string write(const std::string &name, const std::string &content) const;

    std::string path;
};

std::string read_file(const std::string &path);

} // namespace kestu::test
