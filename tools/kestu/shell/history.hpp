// The lines of earlier shells, in a file of the user's.
#pragma once

#include <string>
#include <vector>

namespace program {

// The file is $XDG_STATE_HOME/kestu/history, or ~/.local/state/kestu/history. Lines are added one
// by one as they are entered, so that a shell that dies loses none, and several shells may share
// the file. What goes wrong is told once; the shell then goes on without the file.
class History {
  public:
    History();

    // The last lines of earlier shells, the oldest first. Brings the file down to them: it is
    // others' to write, and whatever is in it that nobody can have typed goes.
    std::vector<std::string> load();

    void add(const std::string &line);

  private:
    void give_up(const std::string &reason);
    bool open_file(int flags, int &file);
    void rewrite(const std::string &content);

    std::string folder_; // empty when nothing is kept
    std::string path_;
};

} // namespace program
