#include "common/new_file.hpp"

#include "common/input_file.hpp"
#include "common/text.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

bool can_be_replaced(const std::string &path) {
    struct stat state;
    return lstat(path.c_str(), &state) == 0 ? S_ISREG(state.st_mode) : errno == ENOENT;
}

using Stream = std::unique_ptr<FILE, int (*)(FILE *)>;

// The mode of the file that is replaced, or the one that a new file has.
mode_t mode_for(const std::string &path) {
    struct stat state;
    if (stat(path.c_str(), &state) == 0)
        return state.st_mode & 0777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The name of a new file beside `path`; empty, and errno tells why, when there can be none.
std::string file_beside(const std::string &path) {
    std::string name = path + ".XXXXXX";
    const int fd = mkstemp(name.data());
    if (fd < 0)
        return "";
    fchmod(fd, mode_for(path));
    close(fd);
    return name;
}

// Asks the system for the cause of a failure by writing more. Pipes and sockets have readers.
kestu_error_t *with_cause(kestu_error_t *err, const char *path) {
    const int fd = open(path, O_WRONLY | O_APPEND | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return in_words(failed_to("write"), err);
    constexpr char block[4096] = "";
    struct stat state = {};
    fstat(fd, &state);
    if ((S_ISREG(state.st_mode) || S_ISCHR(state.st_mode)) &&
        (write(fd, block, sizeof block) < 0 || (fsync(fd) != 0 && errno != EINVAL)))
        err = in_words(failed_to("write"), err);
    close(fd);
    return err;
}

kestu_error_t *write_content(const char *path, const std::string &content) {
    FILE *file = std::fopen(path, "w");
    bool written = file && std::fwrite(content.data(), 1, content.size(), file) == content.size();
    if (file && std::fclose(file) != 0)
        written = false;
    return written ? nullptr : in_words(failed_to("write"));
}

// What is written has to be whole before standard output, which may be a pipe, gets it.
kestu_error_t *
write_standard_output(const std::function<kestu_error_t *(const char *partial)> &write) {
    const Stream kept(std::tmpfile(), std::fclose);
    if (!kept)
        return in_words(failed_to("write"));
    if (kestu_error_t *err = write(text("/proc/self/fd/%d", fileno(kept.get())).c_str()))
        return err;
    char buffer[1 << 14];
    bool written = true;
    while (const size_t got = std::fread(buffer, 1, sizeof buffer, kept.get()))
        written = written && std::fwrite(buffer, 1, got, stdout) == got;
    if (written && std::fflush(stdout) == 0)
        return nullptr;
    kestu_error_t *err = in_words(failed_to("write"));
    clearerr(stdout); // it is told once
    return err;
}

} // namespace

kestu_error_t *write_new_file(const std::string &path,
                              const std::function<kestu_error_t *(const char *partial)> &write) {
    if (path == "-")
        return write_standard_output(write);
    if (!can_be_replaced(path)) {
        kestu_error_t *err = write(path.c_str());
        return err ? with_cause(err, path.c_str()) : nullptr;
    }
    const std::string partial = file_beside(path);
    if (partial.empty())
        return in_words(failed_to("write"));
    kestu_error_t *err = write(partial.c_str());
    if (err)
        err = with_cause(err, partial.c_str());
    else if (std::rename(partial.c_str(), path.c_str()) != 0)
        err = in_words(failed_to("write"));
    if (err)
        unlink(partial.c_str());
    return err;
}

kestu_error_t *write_new_file(const std::string &path, const std::string &content) {
    return write_new_file(path,
                          [&](const char *partial) { return write_content(partial, content); });
}

void print_about(const std::string &path, const std::string &message) {
    std::fputs(message.c_str(), path == "-" ? stderr : stdout);
}

std::string name_of_output(const std::string &path) {
    return path == "-" ? "standard output" : path;
}

} // namespace program
