// Files of earlier lines: a line each, in which a row of several ends with a carriage return.
#include "history.hpp"

#include "failure.hpp"

#include <algorithm>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestu::edit {
namespace {

// What is longer than this at the end of a file is read, and what stands before it is not.
constexpr off_t most_bytes = 16 << 20;

// A file that is open, locked until it is closed.
class Locked {
  public:
    Locked(const char *path, int flags) : file_(open(path, flags | O_CLOEXEC | O_NONBLOCK, 0600)) {
        while (file_ >= 0 && flock(file_, LOCK_EX) != 0 && errno == EINTR) {
        }
    }
    ~Locked() {
        if (file_ >= 0)
            close(file_);
    }
    Locked(const Locked &) = delete;
    Locked &operator=(const Locked &) = delete;
    int get() const { return file_; }

    // Pipes and devices hold no lines.
    bool is_file(off_t &size) const {
        struct stat state = {};
        const bool is = fstat(file_, &state) == 0 && S_ISREG(state.st_mode);
        size = state.st_size;
        return is;
    }

  private:
    int file_;
};

bool read_end(int file, off_t size, Bytes &content) {
    const off_t begin = std::max<off_t>(size - most_bytes, 0);
    char block[4096];
    for (off_t at = begin; at < size;) {
        const ssize_t got = pread(file, block, sizeof block, at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return got == 0;
        if (!content.append({block, static_cast<size_t>(got)})) {
            errno = ENOMEM;
            return false;
        }
        at += got;
    }
    if (begin > 0) // the first line is not whole
        content.erase(0, std::min(content.view().find('\n'), content.size()));
    return true;
}

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = write(file, bytes.data(), bytes.size());
        if (put < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(put > 0 ? static_cast<size_t>(put) : 0);
    }
    return true;
}

bool add_line(Bytes &content, std::string_view line) {
    const size_t begin = content.size();
    if (!content.append(line) || !content.append("\n"))
        return false;
    std::replace(content.begin() + begin, content.end() - 1, '\n', '\r');
    return true;
}

} // namespace

bool History::take_lines(std::string_view content) {
    Bytes line;
    while (!content.empty()) {
        const size_t end = std::min(content.find('\n'), content.size());
        if (!line.assign(part(content, 0, end)))
            return false;
        std::replace(line.begin(), line.end(), '\r', '\n');
        content.remove_prefix(std::min(end + 1, content.size()));
        if (line.empty())
            continue;
        if (!add(line.view()))
            return false;
        if (count() > 0)
            lines_.back().saved = true;
    }
    return true;
}

kestu_error_t *History::load(const char *path) {
    const Locked file(path, O_RDONLY);
    if (file.get() < 0)
        return errno == ENOENT ? nullptr : fail_system(KESTU_ERR_OPEN, path);
    off_t size;
    Bytes content;
    if (!file.is_file(size))
        return KESTU_EDIT_FAIL(KESTU_ERR_READ, "%s: not a regular file", path);
    if (!read_end(file.get(), size, content))
        return fail_system(KESTU_ERR_READ, path);
    return take_lines(content.view()) ? nullptr : no_memory();
}

// A file whose last line is not ended, as by a full disk, gets its end first.
kestu_error_t *History::append_to(int file, const char *path) {
    Bytes added;
    struct stat state = {};
    char last = '\n';
    if (fstat(file, &state) == 0 && state.st_size > 0 &&
        pread(file, &last, 1, state.st_size - 1) == 1 && last != '\n' && !added.append("\n"))
        return no_memory();
    for (const Entry &entry : lines_)
        if (!entry.saved && !add_line(added, {entry.text, entry.size}))
            return no_memory();
    if (!write_all(file, added.view())) {
        kestu_error_t *err = fail_system(KESTU_ERR_WRITE, path);
        static_cast<void>(ftruncate(file, state.st_size) == 0); // or half a line stays
        return err;
    }
    for (Entry &entry : lines_)
        entry.saved = true;
    return nullptr;
}

// Writes the last lines in place of all, once there are twice as many as the limit. They are read
// from the file, which holds those of other programs, too.
kestu_error_t *History::shorten(int file, const char *path) {
    struct stat state = {};
    Bytes content;
    if (fstat(file, &state) != 0 || !read_end(file, state.st_size, content))
        return fail_system(KESTU_ERR_READ, path);
    const auto lines = static_cast<size_t>(std::count(content.begin(), content.end(), '\n'));
    if (state.st_size <= most_bytes && lines / 2 <= limit_)
        return nullptr;
    History kept;
    kept.limit(limit_);
    Bytes shorter;
    if (!kept.take_lines(content.view()))
        return no_memory();
    for (const Entry &entry : kept.lines_)
        if (!add_line(shorter, {entry.text, entry.size}))
            return no_memory();
    if (ftruncate(file, 0) != 0 || !write_all(file, shorter.view()))
        return fail_system(KESTU_ERR_WRITE, path);
    return nullptr;
}

kestu_error_t *History::save(const char *path) {
    const Locked file(path, O_RDWR | O_CREAT | O_APPEND);
    off_t size;
    if (file.get() < 0)
        return fail_system(KESTU_ERR_OPEN, path);
    if (!file.is_file(size))
        return KESTU_EDIT_FAIL(KESTU_ERR_OPEN, "%s: not a regular file", path);
    // One that was there may have been open to others.
    if (fchmod(file.get(), 0600) != 0 && errno != EPERM)
        return fail_system(KESTU_ERR_WRITE, path);
    if (kestu_error_t *err = append_to(file.get(), path))
        return err;
    return shorten(file.get(), path);
}

} // namespace kestu::edit
