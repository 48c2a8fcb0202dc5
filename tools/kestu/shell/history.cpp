#include "shell/history.hpp"

#include "common/new_file.hpp"
#include "common/text.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

constexpr size_t most_lines = 1000;
constexpr size_t longest_line = 4096;
constexpr size_t most_bytes = 1 << 20;

class File {
  public:
    File() = default;
    ~File() {
        if (number >= 0)
            close(number);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    int number = -1;
};

std::string reason() {
    return std::strerror(errno);
}

// The convention for these folders ignores relative paths.
std::string state_folder() {
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state && *state == '/')
        return state;
    const char *home = std::getenv("HOME");
    return home && *home == '/' ? home + std::string("/.local/state") : "";
}

// Makes the folders above too, all for the user alone.
void make_folder(const std::string &path) {
    for (size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), 0700);
    mkdir(path.c_str(), 0700);
}

bool can_be_kept(std::string_view line) {
    const auto is_text = [](unsigned char c) { return c == '\t' || (c >= ' ' && c != 0x7F); };
    return !line.empty() && line.size() <= longest_line &&
           std::all_of(line.begin(), line.end(), is_text);
}

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
    }
    return true;
}

// The end of a file, at most `most_bytes`.
std::string read_end(int file, off_t size) {
    std::string content(std::min(static_cast<size_t>(size), most_bytes), '\0');
    const off_t start = size - static_cast<off_t>(content.size());
    size_t filled = 0;
    while (filled < content.size()) {
        const ssize_t count = pread(file, content.data() + filled, content.size() - filled,
                                    start + static_cast<off_t>(filled));
        if (count <= 0)
            break;
        filled += static_cast<size_t>(count);
    }
    content.resize(filled);
    return content;
}

std::deque<std::string> kept_lines(std::string_view content) {
    std::deque<std::string> lines;
    while (!content.empty()) {
        const size_t end = std::min(content.find('\n'), content.size());
        if (const std::string_view line = content.substr(0, end); can_be_kept(line))
            lines.emplace_back(line);
        content.remove_prefix(std::min(end + 1, content.size()));
        if (lines.size() > most_lines)
            lines.pop_front();
    }
    return lines;
}

} // namespace

History::History() {
    const std::string state = state_folder();
    if (state.empty()) {
        give_up("neither XDG_STATE_HOME nor HOME names a folder");
        return;
    }
    folder_ = state + "/kestu";
    path_ = folder_ + "/history";
}

std::vector<std::string> History::load() {
    File file;
    if (folder_.empty() || !open_file(O_RDONLY, file.number))
        return {};
    struct stat status = {};
    fstat(file.number, &status);
    const std::string content = read_end(file.number, status.st_size);
    const auto lines = kept_lines(content);
    std::string wanted;
    for (const std::string &line : lines)
        wanted += line + '\n';
    if (wanted != content || static_cast<size_t>(status.st_size) != content.size())
        rewrite(wanted);
    return {lines.begin(), lines.end()};
}

void History::add(const std::string &line) {
    if (folder_.empty() || !can_be_kept(line))
        return;
    make_folder(folder_);
    File file;
    if (open_file(O_WRONLY | O_APPEND | O_CREAT, file.number) &&
        !write_all(file.number, line + '\n'))
        give_up(reason());
}

void History::give_up(const std::string &why) {
    const std::string name = path_.empty() ? "" : printable(path_.c_str()) + ": ";
    std::fprintf(stderr, "kestu: %s%s; the history is not kept\n", name.c_str(), why.c_str());
    folder_.clear();
}

// True with an ordinary file. A file that is not there to be read is no failure; opening what is
// no file never waits for it.
bool History::open_file(int flags, int &file) {
    file = open(path_.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
    if (file < 0) {
        if (errno != ENOENT || (flags & O_CREAT))
            give_up(reason());
        return false;
    }
    struct stat status = {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode))
        return true;
    give_up("not a regular file");
    return false;
}

void History::rewrite(const std::string &content) {
    if (kestu_error_t *err = write_new_file(path_, content)) {
        give_up(err->message ? err->message : "cannot be written");
        kestu_error_clear(err);
    }
}

} // namespace program
