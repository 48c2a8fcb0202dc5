// Where the shell's lines come from: a person at a terminal, or a file or pipe.
#pragma once

#include "shell/history.hpp"

#include <cstdio>
#include <string>
#include <vector>

namespace program {

enum class Read {
    line,
    interrupted, // given up with Ctrl-C
    end,
    failed, // reading is not possible, which has been told
};

// A person, with the library's line editor, on standard input and output.
class Typed {
  public:
    // Completes the first words of commands from `commands`, and all others to files.
    explicit Typed(std::vector<std::string> commands);
    ~Typed();
    Typed(const Typed &) = delete;
    Typed &operator=(const Typed &) = delete;

    // Stores through `text` what was typed, one row or several. `goes_on` asks for the rest of a
    // command.
    Read read(std::string &text, bool goes_on);

    kestu_edit_t *editor() const { return editor_; }

  private:
    kestu_edit_t *editor_;
    History history_;
    std::vector<std::string> commands_;
};

// A file or a pipe, line by line. What commands read from standard input is not taken from it.
class Script {
  public:
    Script();
    ~Script();
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    Read read(std::string &line);

  private:
    FILE *file_;
    char *buffer_ = nullptr;
    size_t size_ = 0;
};

} // namespace program
