// Walking a tree of folders. One folder is open at a time, and those still to be visited wait in a
// list, so that neither the stack nor the file descriptors limit the depth of a tree.
#include "kestu_dir.h"

#include "base/kept_errno.hpp"
#include "files/pattern.hpp"
#include "files/presence.hpp"
#include "kestu_mem.h"
#include "mem/memory.hpp"

#include <apr_file_info.h>
#include <apr_portable.h>
#include <apr_strings.h>

#include <cstring>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

using namespace kestu;

namespace {

constexpr const char *action = "Cannot traverse directories.";

// How often in a row the reading of one folder may fail before it is given up.
constexpr int max_failed_reads = 16;

// The path of a folder still to be visited; the text follows the record.
struct Folder {
    Folder *next;
    const char *path() const { return reinterpret_cast<const char *>(this + 1); }
};

// Folders in the order in which they are to be visited.
class FolderList {
  public:
    FolderList() = default;
    FolderList(const FolderList &) = delete;
    FolderList &operator=(const FolderList &) = delete;
    ~FolderList() {
        while (Folder *folder = take_first())
            kestu_mem_free(folder);
    }

    kestu_error_t *append(const char *path) {
        const size_t length = std::strlen(path) + 1;
        Folder *folder = nullptr;
        if (kestu_error_t *err = kestu_mem_malloc(sizeof(Folder) + length, &folder))
            return err;
        folder->next = nullptr;
        std::memcpy(folder + 1, path, length);
        *end_ = folder;
        end_ = &folder->next;
        return nullptr;
    }

    // Moves all of `other` to the front.
    void prepend(FolderList &other) {
        if (!other.first_)
            return;
        *other.end_ = first_;
        end_ = first_ ? end_ : other.end_;
        first_ = std::exchange(other.first_, nullptr);
        other.end_ = &other.first_;
    }

    // The caller releases it; null when there is none.
    Folder *take_first() {
        Folder *taken = first_;
        if (taken)
            first_ = taken->next;
        if (!first_)
            end_ = &first_;
        return taken;
    }

  private:
    Folder *first_ = nullptr;
    Folder **end_ = &first_;
};

enum class Kind { folder, file, other };

// What an entry is. The file system tells with its name, or else when it is looked up; what cannot
// be looked up any more counts as something else.
Kind kind_of(int folder, const dirent &entry) {
    switch (entry.d_type) {
    case DT_DIR:
        return Kind::folder;
    case DT_REG:
    case DT_LNK:
        return Kind::file;
    case DT_BLK:
    case DT_CHR:
    case DT_FIFO:
    case DT_SOCK:
        return Kind::other;
    default:
        break;
    }
    struct stat now;
    if (fstatat(folder, entry.d_name, &now, AT_SYMLINK_NOFOLLOW) != 0)
        return Kind::other;
    if (S_ISDIR(now.st_mode))
        return Kind::folder;
    return S_ISREG(now.st_mode) || S_ISLNK(now.st_mode) ? Kind::file : Kind::other;
}

bool is_dots(const char *name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

void warn_of_nameless_entry() {
    kestu_error_t *warning = kestu_error_create_i(KESTU_ERROR_WARNING, 0, 0, nullptr, nullptr,
                                                  nullptr, "info.name is NULL");
    kestu_error_clear(kestu_error_handle(warning, kestu_error_stdhandler, stdout));
}

class Traversal {
  public:
    explicit Traversal(const kestu_dir_traverse_t &given) : options_(given) {}

    kestu_error_t *run(const char *dir, apr_pool_t *pool);

  private:
    kestu_error_t *visit_folder(const char *path);
    kestu_error_t *visit_entries(const char *folder, DIR *stream);
    kestu_error_t *visit_entry(const char *folder, int fd, const dirent &entry);
    kestu_error_t *visit_file(const char *path, const char *name);
    kestu_error_t *visit_subfolder(const char *path);
    kestu_error_t *call_back(const char *path);

    const kestu_dir_traverse_t &options_;
    apr_pool_t *folder_pool_ = nullptr; // holds the folder at hand, which is open
    apr_pool_t *entry_pool_ = nullptr;  // cleared before each entry
    Presence presence_;                 // of the files of the folder at hand
    FolderList found_;                  // in the folder at hand
    FolderList waiting_;
    bool was_opened_ = false; // the folder at hand
    bool stopped_by_error_ = false;
};

// Kept: a folder stays open when an error of the callback ends the traversal. Relied on by: callers
// that release it with their pool.
kestu_error_t *Traversal::run(const char *dir, apr_pool_t *pool) {
    if (kestu_error_t *err = new_pool(&folder_pool_, pool))
        return err;
    kestu_error_t *err = new_pool(&entry_pool_, pool);
    if (!err)
        err = visit_folder(dir);
    for (Folder *folder; !err && (folder = waiting_.take_first());) {
        err = visit_folder(folder->path());
        kestu_mem_free(folder);
        if (err && !was_opened_ && (options_.flags & KESTU_DIR_GO_ON))
            report(std::exchange(err, nullptr));
    }
    if (!stopped_by_error_) {
        if (entry_pool_)
            apr_pool_destroy(entry_pool_);
        apr_pool_destroy(folder_pool_);
    }
    return err;
}

kestu_error_t *Traversal::visit_folder(const char *path) {
    apr_pool_clear(folder_pool_);
    apr_dir_t *dir = nullptr;
    apr_status_t status = apr_dir_open(&dir, path, folder_pool_);
    was_opened_ = status == APR_SUCCESS;
    if (!was_opened_)
        return kestu_error_aprwrapf_i(status, 0, nullptr, nullptr, "(%s)", path);
    DIR *stream = nullptr;
    apr_os_dir_get(&stream, dir);
    if (kestu_error_t *err = visit_entries(path, stream))
        return err;
    status = apr_dir_close(dir);
    if (status != APR_SUCCESS)
        return fail_apr(status);
    waiting_.prepend(found_);
    return nullptr;
}

kestu_error_t *Traversal::visit_entries(const char *folder, DIR *stream) {
    const int fd = dirfd(stream);
    presence_.enter(fd);
    int failed_reads = 0;
    for (;;) {
        apr_pool_clear(entry_pool_);
        errno = 0;
        if (const dirent *entry = readdir(stream)) {
            failed_reads = 0;
            if (kestu_error_t *err = visit_entry(folder, fd, *entry))
                return err;
        } else if (errno == 0) {
            return nullptr;
        } else if (++failed_reads == max_failed_reads) {
            return fail_apr(errno);
        } else {
            warn_of_nameless_entry();
        }
    }
}

kestu_error_t *Traversal::visit_entry(const char *folder, int fd, const dirent &entry) {
    const Kind kind = kind_of(fd, entry);
    if (kind == Kind::other)
        return nullptr;
    constexpr int about_folders = KESTU_DIR_RECURSE | KESTU_DIR_FOLDERS;
    if (kind == Kind::folder && (!(options_.flags & about_folders) || is_dots(entry.d_name)))
        return nullptr;
    char *path = nullptr;
    if (apr_status_t status =
            apr_filepath_merge(&path, folder, entry.d_name, APR_FILEPATH_NATIVE, entry_pool_))
        return kind == Kind::folder || presence_.has(entry.d_name) ? fail_apr(status) : nullptr;
    return kind == Kind::folder ? visit_subfolder(path) : visit_file(path, entry.d_name);
}

kestu_error_t *Traversal::visit_subfolder(const char *path) {
    if (options_.flags & KESTU_DIR_FOLDERS) {
        const char *name = apr_pstrcat(entry_pool_, path, "/", nullptr);
        if (!name)
            return no_memory(std::strlen(path) + 2);
        kestu_error_t *err = call_back(name);
        if (err)
            return err == KestuDLlistStopWalking ? nullptr : err;
    }
    return options_.flags & KESTU_DIR_RECURSE ? found_.append(path) : nullptr;
}

// Of the files that the lists let pass, those are left out that vanished or cannot be looked up.
kestu_error_t *Traversal::visit_file(const char *path, const char *name) {
    const char *matched = options_.flags & KESTU_DIR_NAMES ? name : path;
    const bool excluded =
        options_.exclude && matchToCompositePattern(matched, options_.exclude, &options_);
    if (excluded || !matchToCompositePattern(matched, options_.include, &options_) ||
        !presence_.has(name))
        return nullptr;
    return call_back(path);
}

kestu_error_t *Traversal::call_back(const char *path) {
    kestu_error_t *err =
        presence_.during([&] { return options_.callback(path, options_.user_data, entry_pool_); });
    if (!err || err == KestuDLlistStopWalking)
        return err;
    if (options_.flags & KESTU_DIR_STOP) {
        stopped_by_error_ = true;
        return err;
    }
    report(err);
    return nullptr;
}

// A null text leaves the list that is there.
kestu_error_t *compile_into(apr_array_header_t *&list, const char *text, apr_pool_t *pool) {
    if (!text)
        return nullptr;
    list = compile_patterns(text, pool);
    return list ? nullptr : no_memory(std::strlen(text) + 1);
}

kestu_error_t *traverse(const char *dir, const char *include, const char *exclude,
                        kestu_dir_traverse_t &options, apr_pool_t *pool) {
    if (kestu_error_t *err = compile_into(options.include, include, pool))
        return err;
    if (kestu_error_t *err = compile_into(options.exclude, exclude, pool))
        return err;
    kestu_error_t *err = Traversal(options).run(dir, pool);
    return err == KestuDLlistStopWalking ? nullptr : err;
}

} // namespace

kestu_error_t *kestu_dir_traverse(const char *dir, const char *include, const char *exclude,
                                  kestu_dir_traverse_t *options, apr_pool_t *pool) {
    const KeptErrno kept;
    return wrap(traverse(dir, include, exclude, *options, pool), action);
}
