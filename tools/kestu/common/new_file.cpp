#include "common/new_file.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

bool can_be_replaced(const std::string &path) {
    struct stat state;
    return lstat(path.c_str(), &state) == 0 ? S_ISREG(state.st_mode) : errno == ENOENT;
}

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

kestu_error_t *refusal() {
    return kestu_error_createf_i(KESTU_ERROR_PLAIN, 0, 0, nullptr, nullptr, nullptr,
                                 "cannot be written: %s", std::strerror(errno));
}

kestu_error_t *write_content(const char *path, const std::string &content) {
    FILE *file = std::fopen(path, "w");
    bool written = file && std::fwrite(content.data(), 1, content.size(), file) == content.size();
    if (file && std::fclose(file) != 0)
        written = false;
    return written ? nullptr : refusal();
}

} // namespace

kestu_error_t *write_new_file(const std::string &path,
                              const std::function<kestu_error_t *(const char *partial)> &write) {
    if (!can_be_replaced(path))
        return write(path.c_str());
    const std::string partial = file_beside(path);
    if (partial.empty())
        return refusal();
    kestu_error_t *err = write(partial.c_str());
    if (!err && std::rename(partial.c_str(), path.c_str()) != 0)
        err = refusal();
    if (err)
        unlink(partial.c_str());
    return err;
}

kestu_error_t *write_new_file(const std::string &path, const std::string &content) {
    return write_new_file(path,
                          [&](const char *partial) { return write_content(partial, content); });
}

} // namespace program
