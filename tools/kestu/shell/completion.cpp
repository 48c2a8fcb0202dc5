#include "shell/completion.hpp"

#include <algorithm>
#include <filesystem>

namespace program {
namespace {

namespace fs = std::filesystem;

void propose(kestu_edit_proposals_t *proposals, const std::string &text, const std::string &shown,
             const char *behind) {
    kestu_error_clear(kestu_edit_propose(proposals, text.c_str(), shown.c_str(), behind));
}

void propose_files(kestu_edit_proposals_t *proposals, const std::string &word) {
    const size_t slash = word.rfind('/');
    const std::string folder = slash == word.npos ? "" : word.substr(0, slash + 1);
    const std::string front = word.substr(folder.size());
    std::vector<std::string> names;
    std::error_code failed;
    for (fs::directory_iterator at(folder.empty() ? "." : folder, failed), end;
         !failed && at != end; at.increment(failed)) {
        const std::string name = at->path().filename();
        std::error_code unknown;
        if (name.starts_with(front) && (name[0] != '.' || !front.empty()))
            names.push_back(name + (at->is_directory(unknown) ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    for (const std::string &name : names)
        propose(proposals, folder + name, name, name.ends_with('/') ? "" : " ");
}

} // namespace

void complete(kestu_edit_proposals_t *proposals, const std::string &front,
              const std::vector<std::string> &commands) {
    const size_t last = front.find_last_of(" \t\n|>");
    const size_t begin = last == front.npos ? 0 : last + 1;
    const std::string word = front.substr(begin);
    kestu_edit_propose_from(proposals, begin);
    if (front.find_first_not_of(" \t\n") < begin)
        return propose_files(proposals, word);
    for (const std::string &command : commands)
        if (command.starts_with(word))
            propose(proposals, command, command, " ");
}

} // namespace program
