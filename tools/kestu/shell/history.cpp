#include "shell/history.hpp"

#include "program.hpp"

#include <cstdlib>

#include <sys/stat.h>

namespace program {
namespace {

// The convention for these folders ignores relative paths.
std::string state_folder() {
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state && *state == '/')
        return state;
    const char *home = std::getenv("HOME");
    return home && *home == '/' ? home + std::string("/.local/state") : "";
}

// Makes the folders above the file, all for the user alone.
void make_folders(const std::string &path) {
    for (size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), 0700);
}

} // namespace

History::History(kestu_edit_t *editor) : editor_(editor) {
    const std::string state = state_folder();
    if (state.empty()) {
        give_up("neither XDG_STATE_HOME nor HOME names a folder");
        return;
    }
    path_ = state + "/kestu/history";
    check(kestu_edit_history_load(editor_, path_.c_str()));
}

// A line that finds no room is only not there to be recalled.
void History::add(const std::string &line) {
    kestu_error_clear(kestu_edit_history_add(editor_, line.data(), line.size()));
    if (path_.empty())
        return;
    make_folders(path_);
    check(kestu_edit_history_save(editor_, path_.c_str()));
}

void History::check(kestu_error_t *err) {
    if (!err)
        return;
    const char *message = kestu_error_root_cause(err)->message;
    give_up(message ? message : "no memory");
    kestu_error_clear(err);
}

void History::give_up(const std::string &reason) {
    say(reason + "; the history is not kept");
    path_.clear();
}

} // namespace program
