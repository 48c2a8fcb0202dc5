#include "common/input_file.hpp"

#include "common/text.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

using Stream = std::unique_ptr<FILE, int (*)(FILE *)>;

// What is wrong with a file itself; empty when nothing is.
std::string fault_of(const char *path) {
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return failed_to("open");
    struct stat state = {};
    fstat(fd, &state);
    close(fd);
    if (S_ISDIR(state.st_mode))
        return std::string("cannot read: ") + std::strerror(EISDIR);
    return S_ISREG(state.st_mode) && state.st_size == 0 ? "is empty" : "";
}

// What can be read but once: standard input, and pipes with names.
bool is_stream(const std::string &path) {
    struct stat state = {};
    return path == "-" || (stat(path.c_str(), &state) == 0 && S_ISFIFO(state.st_mode));
}

int open_stream(const std::string &path) {
    return path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

bool keep_all(int fd, FILE *file) {
    char buffer[1 << 14];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got == 0)
            return std::fflush(file) == 0;
        if (got < 0 && errno != EINTR)
            return false;
        if (got > 0 && std::fwrite(buffer, 1, static_cast<size_t>(got), file) == 0)
            return false;
    }
}

} // namespace

kestu_error_t *read_file(const std::string &path,
                         const std::function<kestu_error_t *(const char *readable)> &read) {
    Stream kept(nullptr, std::fclose);
    std::string readable = path;
    if (is_stream(path)) {
        kept.reset(std::tmpfile()); // without a name: nothing stays, whatever happens
        const int fd = open_stream(path);
        const bool is_kept = kept && fd >= 0 && keep_all(fd, kept.get());
        const std::string failure = is_kept ? "" : failed_to("read");
        if (fd >= 0)
            close(fd);
        if (!is_kept)
            return in_words(failure);
        readable = text("/proc/self/fd/%d", fileno(kept.get()));
    }
    kestu_error_t *err = read(readable.c_str());
    const std::string fault = err ? fault_of(readable.c_str()) : "";
    return fault.empty() ? err : in_words(fault, err);
}

std::string name_of_input(const std::string &path) {
    return path == "-" ? "standard input" : path;
}

kestu_error_t *in_words(const std::string &words, kestu_error_t *cause) {
    return kestu_error_create_i(KESTU_ERROR_PLAIN, 0, 0, nullptr, nullptr, cause, words.c_str());
}

std::string failed_to(const char *action) {
    return text("cannot %s: %s", action, std::strerror(errno));
}

} // namespace program
