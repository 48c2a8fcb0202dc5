// Walking 20,000 files in 200 folders; beside nftw, beside fts, which asks for names only, and
// beside the bare system calls for the names.
#include "kestu_dir.h"
#include "kestu_lib.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <fts.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int folders = 200;
constexpr int files = 100;

std::string make_tree() {
    char name[] = "/tmp/kestu-bench-XXXXXX";
    const std::string root = mkdtemp(name);
    for (int i = 0; i < folders; ++i) {
        const std::string folder = root + "/folder-" + std::to_string(i);
        mkdir(folder.c_str(), 0755);
        for (int j = 0; j < files; ++j)
            close(creat((folder + "/file-" + std::to_string(j) + ".c").c_str(), 0644));
    }
    return root;
}

std::string root;
long visited = 0;

void check(benchmark::State &state) {
    if (visited != static_cast<long>(state.iterations()) * folders * files)
        state.SkipWithError("files are missing");
    state.SetItemsProcessed(visited);
}

void ours(benchmark::State &state, const char *include) {
    visited = 0;
    kestu_dir_traverse_t options = {};
    options.flags = KESTU_DIR_RECURSE;
    options.callback = [](const char *, void *, apr_pool_t *) -> kestu_error_t * {
        ++visited;
        return nullptr;
    };
    for (auto _ : state) {
        apr_pool_t *pool = nullptr;
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
        kestu_error_clear(kestu_dir_traverse(root.c_str(), include, nullptr, &options, pool));
        apr_pool_destroy(pool);
    }
    check(state);
}

void with_nftw(benchmark::State &state) {
    visited = 0;
    const auto count = [](const char *, const struct stat *, int type, FTW *) {
        visited += type == FTW_F;
        return 0;
    };
    for (auto _ : state)
        nftw(root.c_str(), count, 16, FTW_PHYS);
    check(state);
}

void with_fts(benchmark::State &state) {
    visited = 0;
    char *const roots[] = {root.data(), nullptr};
    for (auto _ : state) {
        FTS *walk = fts_open(roots, FTS_PHYSICAL | FTS_NOSTAT, nullptr);
        while (const FTSENT *entry = fts_read(walk))
            visited += entry->fts_info == FTS_F || entry->fts_info == FTS_NSOK;
        fts_close(walk);
    }
    check(state);
}

// Two levels, which is known.
void limit(benchmark::State &state) {
    visited = 0;
    for (auto _ : state) {
        DIR *top = opendir(root.c_str());
        while (const dirent *folder = readdir(top)) {
            if (folder->d_name[0] == '.')
                continue;
            const int fd = openat(dirfd(top), folder->d_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
            DIR *sub = fdopendir(fd);
            while (const dirent *file = readdir(sub))
                visited += file->d_type == DT_REG;
            closedir(sub);
        }
        closedir(top);
    }
    check(state);
}

BENCHMARK_CAPTURE(ours, all, nullptr)->Name("walk 20000 files/ours");
BENCHMARK(with_nftw)->Name("walk 20000 files/nftw");
BENCHMARK(with_fts)->Name("walk 20000 files/fts without stat");
BENCHMARK(limit)->Name("walk 20000 files/limit (reading the names)");
BENCHMARK_CAPTURE(ours, filtered, "*.h;*/folder-*/*.c")->Name("walk and match 20000 files/ours");

} // namespace

int main(int argc, char **argv) {
    kestu_initialize();
    benchmark::Initialize(&argc, argv);
    root = make_tree();
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(root);
    kestu_terminate();
}
