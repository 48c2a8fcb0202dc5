// The directory and the last component of a path.
#include "util/path.hpp"

#include "frame/error.hpp"
#include "kestu_mem.h"
#include "kestu_util.h"
#include "util/kept_errno.hpp"

#include <cstdlib>
#include <cstring>

namespace kestu {
namespace {

std::string_view trim_slashes(std::string_view path) {
    while (!path.empty() && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string_view trim_component(std::string_view path) {
    while (!path.empty() && path.back() != '/')
        path.remove_suffix(1);
    return path;
}

} // namespace

std::string_view last_component(std::string_view path) {
    if (path.empty())
        return ".";
    const std::string_view trimmed = trim_slashes(path);
    if (trimmed.empty())
        return "/";
    const size_t directory = trim_component(trimmed).size();
    return {trimmed.data() + directory, trimmed.size() - directory};
}

std::string_view directory_part(std::string_view path) {
    if (path.empty())
        return ".";
    const std::string_view trimmed = trim_slashes(path);
    if (trimmed.empty())
        return "/";
    const std::string_view with_slashes = trim_component(trimmed);
    if (with_slashes.empty())
        return ".";
    const std::string_view directory = trim_slashes(with_slashes);
    return directory.empty() ? "/" : directory;
}

} // namespace kestu

using namespace kestu;

namespace {

using Half = std::string_view (*)(std::string_view path);

// Works on a copy, so that `out` may overlap `path`.
size_t write_half(Half half, const char *path, char *out, size_t size) {
    if (size < 2)
        return 0;
    if (!path || !*path) {
        std::memcpy(out, ".", 2);
        return 1;
    }
    const KeptErrno kept;
    const size_t length = std::strlen(path);
    char *copy = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(length + 1, &copy)) {
        report(err);
        std::abort();
    }
    std::memcpy(copy, path, length + 1);
    const std::string_view result = half({copy, length});
    const size_t written = result.size() < size ? result.size() : size - 1;
    std::memcpy(out, result.data(), written);
    out[written] = '\0';
    kestu_mem_free(copy);
    return result.size();
}

} // namespace

size_t kestu_util_dirname(const char *path, char *out, size_t size) {
    return write_half(directory_part, path, out, size);
}

size_t kestu_util_basename(const char *path, char *out, size_t size) {
    return write_half(last_component, path, out, size);
}
