// Asking the system about files of a folder.
#include "files/presence.hpp"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace kestu {
namespace {

constexpr long xfs_magic = 0x58465342; // which the system's headers leave out

// Folders of processes, of networks and of other programs may name what cannot be looked up.
bool names_what_is_there(int folder) {
    struct statfs system;
    if (fstatfs(folder, &system) != 0)
        return false;
    switch (system.f_type) {
    case BTRFS_SUPER_MAGIC:
    case EXT4_SUPER_MAGIC:
    case OVERLAYFS_SUPER_MAGIC:
    case TMPFS_MAGIC:
    case xfs_magic:
        return true;
    default:
        return false;
    }
}

} // namespace

void Presence::enter(int folder) {
    folder_ = folder;
    is_certain_ = names_what_is_there(folder) && is_there("."); // which needs the same rights
}

// Asking costs less than reading the file's state.
bool Presence::is_there(const char *name) const {
    return faccessat(folder_, name, F_OK, AT_EACCESS | AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace kestu
