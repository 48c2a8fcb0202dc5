#include "files/folder.hpp"

#include "common/input_file.hpp"

#include <fcntl.h>
#include <unistd.h>

namespace program {

std::string fault_of_folder(const std::string &path, bool links_count) {
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (links_count ? 0 : O_NOFOLLOW);
    const int fd = open(path.c_str(), flags);
    if (fd < 0)
        return path + ": " + failed_to("open");
    close(fd);
    return "";
}

} // namespace program
