// The program's commands at a prompt, or in a script.
#pragma once

#include "kestu_edit.h"

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
    void forget();

    // What may be typed: the program with the shell's own commands, and the words that are there.
    const CompletedCommand &root() const { return table_.root(); }
    const Words &words() const { return words_; }

    // Where the lines of `history` come from; none without it.
    void set_history(const kestu_edit_t *editor) { history_ = editor; }

    // Whether a command has asked to leave.
    bool left() const { return leaving_; }

    // The exit status of the last command that failed, 0 when none has.
    int status() const { return status_; }

    // The exit status that was asked for, 0 when none was.
    int asked() const { return asked_; }
    void fail(const std::string &message, int status);

  private:
    void run_words(std::vector<std::string> command, const std::string &rest);
    int run_command(const std::vector<std::string> &command);
    void run_own(const std::vector<std::string> &command);
    void refuse(const std::string &name);
    void help(std::vector<std::string> names);
    void list() const;
    void leave(const std::vector<std::string> &command);
    void change_folder(const std::vector<std::string> &command);
    void print_folder();
    void print_history() const;

    CommandTable table_;
    Words words_;
    bool keeps_input_;
    const kestu_edit_t *history_ = nullptr;
    std::string folder_before_; // which "cd -" goes back to
    bool leaving_ = false;
    int status_ = 0;
    int asked_ = 0;
};

struct ShellOptions {
    std::string file; // a script; empty for none
    std::string text; // commands, if `has_text`
    bool has_text = false;
    bool stop = false; // at the first failure
};

// Runs the script, the commands, what standard input holds, or what is typed there when it and
// standard output are a terminal, and returns the exit status.
int run_shell(const ShellOptions &options);

} // namespace program
