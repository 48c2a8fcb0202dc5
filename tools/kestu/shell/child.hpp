// Running a command of the shell.
#pragma once

#include <string>
#include <vector>

namespace program {

// While it lives, the keys that end a program (Ctrl-C and Ctrl-\) end commands only. They are sent
// to all that runs on the terminal, the shell among them. One at a time.
class KeysForCommands {
  public:
    KeysForCommands();
    ~KeysForCommands();
    KeysForCommands(const KeysForCommands &) = delete;
    KeysForCommands &operator=(const KeysForCommands &) = delete;
};

// Runs the program with these arguments in a process of its own, so that a fault ends the
// command and not the shell. Without `keeps_input` its standard input is empty. Returns the
// exit status, or 128 and the number of the signal that ended it.
int run_in_child(const std::vector<std::string> &arguments, bool keeps_input);

} // namespace program
