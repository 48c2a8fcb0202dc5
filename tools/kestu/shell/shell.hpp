// The program's commands at a prompt, or in a script.
#pragma once

#include "shell/table.hpp"
#include "shell/words.hpp"

#include <string>
#include <vector>

namespace program {

// Runs the commands in lines that are given to it.
class Shell {
  public:
    // Whether commands read from the shell's own standard input, or find theirs empty.
    explicit Shell(bool commands_read);

    // Runs the command that `line` ends, if it does.
    void take(const std::string &line);

    // Whether the last line goes on in the next one, which forget() makes unnecessary.
    bool incomplete() const { return words_.incomplete(); }
    void forget() { words_.take(); }

    // The names of all commands.
    std::vector<std::string> names() const;

    // Whether a command has asked to leave.
    bool left() const { return leaving_; }

    // The exit status of the last command that failed, 0 when none has.
    int status() const { return last_failure_; }
    void fail(const std::string &message);

  private:
    void run_words(std::vector<std::string> command);
    void run_program(const std::vector<std::string> &arguments);
    void refuse(const std::string &name);
    void help(std::vector<std::string> names);
    void list() const;

    CommandTable table_;
    Words words_;
    bool keeps_input_;
    bool leaving_ = false;
    int last_failure_ = 0;
};

// Runs what standard input holds, or what is typed there when it and standard output are a
// terminal, and returns the exit status.
int run_shell();

} // namespace program
