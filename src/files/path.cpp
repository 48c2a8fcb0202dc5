// The directory and the last component of a path.
#include "kestu_util.h"

#include "base/kept_errno.hpp"
#include "base/path_view.hpp"
#include "error/report.hpp"
#include "kestu_mem.h"

#include <cstdlib>
#include <cstring>

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
