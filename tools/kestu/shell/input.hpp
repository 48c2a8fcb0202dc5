// Where the shell's lines come from: a person at a terminal, or a file or pipe.
#pragma once

#include "shell/history.hpp"

#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace program {

class Shell;

enum class Read {
    line,
    interrupted, // given up with Ctrl-C
    end,
    failed, // reading is not possible, which has been told
};

// A person, with the library's line editor, on standard input and output.
class Typed {
  public:
    // Completes what `shell` takes, which outlives it.
    explicit Typed(Shell &shell);
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
};

// A script, line by line: a file, a text, or standard input, of which commands take nothing then.
class Script {
  public:
    // Null when the file cannot be opened, which has been told.
    static std::unique_ptr<Script> of_file(const std::string &path);
    static std::unique_ptr<Script> of_text(const std::string &text);
    static std::unique_ptr<Script> of_standard_input();
    ~Script();
    Script(const Script &) = delete;
    Script &operator=(const Script &) = delete;

    Read read(std::string &line);

    // "FILE:LINE: " for the line that was read last; empty for standard input.
    std::string place() const;

  private:
    Script(std::string name, FILE *file) : name_(std::move(name)), file_(file) {}

    std::string name_;
    FILE *file_;
    std::string text_;
    char *buffer_ = nullptr;
    size_t size_ = 0;
    size_t number_ = 0;
};

} // namespace program
