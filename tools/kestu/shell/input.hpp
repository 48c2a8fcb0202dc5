// Where the shell's lines come from: a person at a terminal, or a file or pipe.
#pragma once

#include "shell/history.hpp"

#include "kestu_readline.h"

#include <cstdio>
#include <string>

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
    Typed();
    ~Typed();
    Typed(const Typed &) = delete;
    Typed &operator=(const Typed &) = delete;

    // Stores a line through `line` without its end. `goes_on` asks for the rest of a command.
    Read read(std::string &line, bool goes_on);

  private:
    kestu_error_t *edit(char **line, bool &at_end);
    void remember(const std::string &line);

    int terminal_;
    kestu_ri_t *editor_ = nullptr;
    History history_;
    std::string last_;
    bool interrupted_ = false;
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
