// The two halves of a path, found from its end.
#include "base/path_view.hpp"

#include <cstring>

namespace kestu {
namespace {

std::string_view trim_slashes(std::string_view path) {
    while (!path.empty() && path.back() == '/')
        path.remove_suffix(1);
    return path;
}

std::string_view trim_component(std::string_view path) {
    const void *const slash = path.empty() ? nullptr : memrchr(path.data(), '/', path.size());
    return path.substr(0, slash ? static_cast<const char *>(slash) - path.data() + 1 : 0);
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
