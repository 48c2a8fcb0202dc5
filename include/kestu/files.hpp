// The files of a folder, or of its whole subtree.
//
//     for (std::string_view path : kestu::Files("src", "*.c;*.h"))
//         printf("%.*s\n", int(path.size()), path.data());
//     kestu::each_file("src", {.include = "*.c", .flags = KESTU_DIR_RECURSE},
//                      [](std::string_view path) { return path.ends_with("main.c"); });
#pragma once

#include "../kestu_dir.h"
#include "pool.hpp"

#include <string_view>
#include <vector>

namespace kestu {
inline namespace KESTU_CPP {

// What is visited: pattern lists, of which null is none, and the flags of kestu_dir.h.
struct FileFilter {
    const char *include = nullptr; // what is visited; null: all
    const char *exclude = nullptr; // what is left out
    int flags = KESTU_DIR_RECURSE; // KESTU_DIR_RECURSE and so on
};

// Calls `fn` with the path of each file, until it returns true; the path lives during the call.
// What `fn` throws ends the walk and comes out here; other failures are returned.
template <typename Function>
Expected<void> each_file(std::nothrow_t, CString folder, const FileFilter &filter, Function fn) {
    const auto visit = [&fn](const char *path, apr_pool_t *) -> kestu_error_t * {
        if constexpr (std::is_void_v<decltype(fn(std::string_view(path)))>)
            return fn(std::string_view(path)), nullptr;
        else
            return fn(std::string_view(path)) ? KestuDLlistStopWalking : nullptr;
    };
    detail::Carried carried(visit);
    kestu_dir_traverse_t options{};
    options.flags = filter.flags | KESTU_DIR_STOP;
    options.callback = carried.template callback<kestu_dir_func, 1>();
    options.user_data = &carried;
    apr_pool_t *pool = nullptr;
    if (const apr_status_t status = apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr))
        return detail::failed(kestu_error_aprwrap_i(status, 0, nullptr, nullptr));
    kestu_error_t *err = kestu_dir_traverse(folder, filter.include, filter.exclude, &options, pool);
    apr_pool_destroy(pool);
    if (carried) {
        kestu_error_clear(err);
        carried.rethrow();
    }
    return detail::outcome(err);
}

// As `each_file` above, but throws its failures.
template <typename Function>
void each_file(CString folder, const FileFilter &filter, Function fn) {
    take(each_file(std::nothrow, folder, filter, std::move(fn)));
}

// The paths of a folder's files, found all at once and kept: a range of std::string_view.
class Files {
  public:
    // The files of `folder` that pass the pattern lists, of which null is none.
    explicit Files(CString folder, const char *include = nullptr, const char *exclude = nullptr,
                   int flags = KESTU_DIR_RECURSE) {
        take(find(folder, {include, exclude, flags}));
    }

    // As the constructor, but returns the error.
    static Expected<Files> make(std::nothrow_t, CString folder, const FileFilter &filter = {}) {
        auto pool = Pool::make(std::nothrow);
        if (!pool)
            return Unexpected(std::move(pool.error()));
        Files files(*std::move(pool));
        if (auto found = files.find(folder, filter); !found)
            return Unexpected(std::move(found.error()));
        return files;
    }

    // The first path.
    auto begin() const noexcept { return paths_.begin(); }

    // Behind the last path.
    auto end() const noexcept { return paths_.end(); }

    // How many files there are.
    size_t size() const noexcept { return paths_.size(); }

    // Whether there is none.
    bool empty() const noexcept { return paths_.empty(); }

    // Path number `n`, from 0.
    std::string_view operator[](size_t n) const noexcept { return paths_[n]; }

  private:
    explicit Files(Pool &&pool) noexcept : pool_(std::move(pool)) {}

    Expected<void> find(const char *folder, const FileFilter &filter) {
        return each_file(std::nothrow, folder, filter, [this](std::string_view path) {
            char *copy = static_cast<char *>(pool_.allocate(path.size() + 1, 1));
            paths_.emplace_back(copy, path.copy(copy, path.size()));
        });
    }

    Pool pool_;
    std::vector<std::string_view> paths_;
};

} // namespace KESTU_CPP
} // namespace kestu
