// The lines of earlier shells, in a file of the user's.
#pragma once

#include "kestu_edit.h"

#include <string>

namespace program {

// The file is $XDG_STATE_HOME/kestu/history, or ~/.local/state/kestu/history. Lines are added one
// by one as they are entered, so that a shell that dies loses none, and several shells may share
// the file. What goes wrong is told once; the shell then goes on without the file.
class History {
  public:
    // Brings the lines of earlier shells into `editor`.
    explicit History(kestu_edit_t *editor);

    void add(const std::string &line);

  private:
    void give_up(const std::string &reason);
    void check(kestu_error_t *err);

    kestu_edit_t *editor_;
    std::string path_; // empty when nothing is kept
};

} // namespace program
