// Walking files, on trees made for each test.
#include "support/process.hpp"
#include "support/small_stack.hpp"
#include "support/test.hpp"

#include <filesystem>
#include <optional>

#include <dirent.h>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace kestu::test;
namespace fs = std::filesystem;

namespace {

int reads_to_fail = 0;
bool types_are_told = true;

} // namespace

// The program's own readdir stands before the C library's, for the library under test too.
extern "C" dirent *readdir(DIR *stream) {
    if (reads_to_fail > 0) {
        --reads_to_fail;
        errno = EIO;
        return nullptr;
    }
    using Read = dirent *(*)(DIR *);
    static const auto real = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "readdir"));
    dirent *entry = real(stream);
    if (entry && !types_are_told)
        entry->d_type = DT_UNKNOWN;
    return entry;
}

namespace {

const Element cannot(0, "Cannot traverse directories.");

using Action = std::function<kestu_error_t *(const char *path, apr_pool_t *pool)>;

kestu_error_t *act(const char *path, void *action, apr_pool_t *pool) {
    return (*static_cast<Action *>(action))(path, pool);
}

class Dir : public testing::Test {
  protected:
    Dir() { chmod(root.c_str(), 0755); }

    void make_files(const std::vector<std::string> &names) {
        for (const std::string &name : names) {
            fs::create_directories(fs::path(folder / name).parent_path());
            folder.write(name, name);
        }
    }

    // Traverses with a callback that does what `action` says.
    kestu_error_t *traverse(int flags, Action action, const char *include = nullptr,
                            const char *exclude = nullptr, const char *dir = nullptr) {
        options.flags = flags;
        options.callback = act;
        options.user_data = &action;
        errno = EXDEV;
        kestu_error_t *err =
            kestu_dir_traverse(dir ? dir : root.c_str(), include, exclude, &options, pool);
        EXPECT_EQ(errno, EXDEV);
        return err;
    }

    // The paths below the root that a traversal with new options visits.
    std::vector<std::string> visited(int flags, const char *include = nullptr,
                                     const char *exclude = nullptr) {
        std::vector<std::string> seen;
        const auto collect = [&](const char *path, apr_pool_t *) -> kestu_error_t * {
            EXPECT_EQ(std::string(path).substr(0, root.size() + 1), root + "/");
            seen.emplace_back(path + root.size() + 1);
            return nullptr;
        };
        options = {};
        EXPECT_OK(traverse(flags, collect, include, exclude));
        return seen;
    }

    const TemporaryFolder folder;
    const std::string &root = folder.path;
    Pool pool;
    kestu_dir_traverse_t options = {};
    int calls = 0;

    const Action count = [this](const char *, apr_pool_t *) {
        ++calls;
        return nullptr;
    };
    const Action fail = [this](const char *, apr_pool_t *) {
        ++calls;
        return kestu_error_create(0, 7, nullptr, "mine");
    };
};

size_t open_files() {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

// What is expected of a traversal with KESTU_DIR_RECURSE, written as the rule reads.
void list_in_order(const std::string &dir, const std::string &prefix,
                   std::vector<std::string> &paths) {
    std::vector<std::string> folders;
    for (const auto &entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename();
        if (entry.is_directory())
            folders.push_back(name);
        else
            paths.push_back(prefix + name);
    }
    for (const std::string &name : folders)
        list_in_order(dir + "/" + name, prefix + name + "/", paths);
}

} // namespace

TEST_F(Dir, FilesOfAFolderComeBeforeItsSubfoldersAndEachOfThoseAsAWhole) {
    for (const std::string sub : {"", "x/", "y/", "y/b/", "y/a/", "y/a/deep/"})
        make_files({sub + "3", sub + "1", sub + "2"});
    make_files({"z/1", "z/only/folders/1"});
    std::vector<std::string> expected;
    list_in_order(root, "", expected);
    EXPECT_EQ(visited(KESTU_DIR_RECURSE), expected);
    EXPECT_THAT(visited(0), UnorderedElementsAre("1", "2", "3"));
}

TEST_F(Dir, OnlyFilesAndLinksAreReportedAndLinksAreNotFollowed) {
    make_files({"file", "sub/inner"});
    fs::create_directory_symlink(".", folder / "loop");
    fs::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const bool told : {false, true}) {
        types_are_told = told;
        EXPECT_THAT(visited(KESTU_DIR_RECURSE),
                    UnorderedElementsAre("file", "loop", "dangling", "sub/inner"));
        EXPECT_THAT(visited(0), UnorderedElementsAre("file", "loop", "dangling"));
    }
}

TEST_F(Dir, NamesOfAnyBytesAndOfFullLengthAreVisited) {
    std::string every_byte;
    for (int byte = 1; byte < 256; ++byte)
        every_byte += byte == '/' ? 'x' : static_cast<char>(byte);
    const std::string path = every_byte + "/" + std::string(255, 'n');
    make_files({path, "..."});
    EXPECT_THAT(visited(KESTU_DIR_RECURSE), UnorderedElementsAre("...", path));
}

TEST_F(Dir, ListsFilterTheWholePath) {
    make_files({"a.c", "b.h", "c.o", "sub/d.c", "sub/.e.c", "F.C"});
    constexpr int deep = KESTU_DIR_RECURSE;
    EXPECT_THAT(visited(deep, "*.c;*.h"),
                UnorderedElementsAre("a.c", "b.h", "sub/d.c", "sub/.e.c"));
    EXPECT_THAT(visited(deep, ";;*.h;"), ElementsAre("b.h"));
    EXPECT_THAT(visited(deep | KESTU_DIR_CASE_BLIND, "*.c", "*/sub/*"),
                UnorderedElementsAre("a.c", "F.C"));
    EXPECT_THAT(visited(deep, nullptr, "*.c;*.C;*.h"), ElementsAre("c.o"));
    EXPECT_THAT(visited(deep | KESTU_DIR_SLASH, "*.c"), IsEmpty());
    EXPECT_THAT(visited(deep | KESTU_DIR_SLASH | KESTU_DIR_PERIOD, (root + "/*/*.c").c_str()),
                ElementsAre("sub/d.c"));
    EXPECT_THAT(visited(deep, "\\*.c"), IsEmpty());
    EXPECT_THAT(visited(deep, ""), IsEmpty());
    EXPECT_EQ(visited(deep, nullptr, "").size(), 6u);
    EXPECT_THAT(visited(deep, "a.c"), IsEmpty());
    EXPECT_THAT(visited(deep | KESTU_DIR_NAMES, "?.[ch];sub", "a*"),
                UnorderedElementsAre("b.h", "sub/d.c"));
}

TEST_F(Dir, SubfoldersAreAskedAboutWhateverTheListsSay) {
    make_files({"a", "in/b", "in/deep/c", "out/d"});
    std::vector<std::string> seen;
    const auto collect = [&](const char *path, apr_pool_t *) {
        seen.emplace_back(path + root.size() + 1);
        return seen.back() == "out/" ? KestuDLlistStopWalking : nullptr;
    };
    EXPECT_OK(traverse(KESTU_DIR_FOLDERS, collect, "*/a"));
    EXPECT_THAT(seen, UnorderedElementsAre("a", "in/", "out/"));
    seen.clear();
    EXPECT_OK(traverse(KESTU_DIR_FOLDERS | KESTU_DIR_RECURSE, collect, "*/?", "*b"));
    EXPECT_THAT(seen, UnorderedElementsAre("a", "in/", "out/", "in/deep/", "in/deep/c"));
    EXPECT_CHAIN(traverse(KESTU_DIR_FOLDERS | KESTU_DIR_STOP, fail, ""), 7, cannot.second, "mine");
}

TEST_F(Dir, ListsThatAreThereStayWithoutATextForThem) {
    make_files({"a.c", "b.h"});
    compilePattern("*.c", &options.include, pool);
    apr_array_header_t *const compiled = options.include;
    EXPECT_OK(traverse(0, count));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(options.include, compiled);
    EXPECT_OK(traverse(0, count, "*", "*.h;*.c"));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(options.exclude->nelts, 2);
}

TEST_F(Dir, PatternsAreThePiecesBetweenSemicolons) {
    apr_array_header_t *array = nullptr;
    options.flags = KESTU_DIR_CASE_BLIND | KESTU_DIR_RECURSE;
    const auto matches = [&](const char *path) {
        return matchToCompositePattern(path, array, &options);
    };
    compilePattern(nullptr, &array, pool);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(matches("x"), 1);
    EXPECT_EQ(matches(nullptr), 1);
    compilePattern(";; a ;b?;;[c-e]*;", &array, pool);
    ASSERT_EQ(array->nelts, 3);
    EXPECT_STREQ(reinterpret_cast<char **>(array->elts)[0], " a ");
    for (const char *path : {" a ", "bx", "B\xff", "eeee", "D"})
        EXPECT_EQ(matches(path), 1) << path;
    for (const char *path : {"a", "b", "", "f"})
        EXPECT_EQ(matches(path), 0) << path;
    EXPECT_EQ(matches(nullptr), 0);
    compilePattern("", &array, pool);
    EXPECT_EQ(array->nelts, 0);
    EXPECT_EQ(matches(""), 0);
    char added[] = "f";
    *static_cast<char **>(apr_array_push(array)) = added; // users extend lists
    EXPECT_EQ(matches("F"), 1);
}

TEST_F(Dir, AFolderThatCannotBeOpenedEndsTheTraversal) {
    const size_t open_before = open_files();
    EXPECT_CHAIN(kestu_dir_traverse((folder / "none").c_str(), "*", nullptr, &options, pool),
                 cannot, Element(0, "(" + root + "/none): No such file or directory"));
    make_files({"a/1", "b/1"});
    std::string gone;
    kestu_error_t *err = traverse(
        KESTU_DIR_RECURSE,
        [&](const char *path, apr_pool_t *) {
            EXPECT_EQ(gone, "");
            gone = root + (path == root + "/a/1" ? "/b" : "/a");
            fs::remove_all(gone);
            return nullptr;
        },
        "*");
    EXPECT_CHAIN(err, cannot, Element(0, "(" + gone + "): No such file or directory"));
    EXPECT_EQ(open_files(), open_before);

    // Or is told, while the others are visited.
    make_files({"a/1", "b/1", "c/1"});
    const auto remove_one = [&](const char *path, apr_pool_t *) {
        if (++calls == 1)
            fs::remove_all(gone = root + (path == root + "/b/1" ? "/c" : "/b"));
        return nullptr;
    };
    testing::internal::CaptureStderr();
    EXPECT_OK(traverse(KESTU_DIR_RECURSE | KESTU_DIR_GO_ON, remove_one));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: (" + gone + "): No such file or directory \n");
    EXPECT_EQ(calls, 2);
    EXPECT_CHAIN(traverse(KESTU_DIR_GO_ON, count, nullptr, nullptr, gone.c_str()), cannot,
                 Element(0, "(" + gone + "): No such file or directory"));
}

TEST_F(Dir, FilesThatVanishOrCannotBeLookedUpArePassedOver) {
    make_files({"1", "2", "3", "4"});
    EXPECT_OK(traverse(0, [&](const char *path, apr_pool_t *) {
        ++calls;
        for (const auto &entry : fs::directory_iterator(root))
            if (entry.path() != path)
                fs::remove(entry.path());
        return nullptr;
    }));
    EXPECT_EQ(calls, 1);

    make_files({"locked/file"});
    ASSERT_EQ(chmod((folder / "locked").c_str(), 0444), 0);
    const std::string before = fs::current_path();
    ASSERT_EQ(chdir(root.c_str()), 0); // the way to it may be closed to others
    const bool was_root = geteuid() == 0;
    if (was_root && seteuid(65534) != 0)
        GTEST_SKIP() << "cannot become a user without rights";
    calls = 0;
    kestu_error_t *err = traverse(KESTU_DIR_RECURSE, count, nullptr, nullptr, ".");
    ASSERT_TRUE(!was_root || seteuid(0) == 0);
    ASSERT_EQ(chdir(before.c_str()), 0);
    chmod((folder / "locked").c_str(), 0755);
    EXPECT_OK(err);
    EXPECT_EQ(calls, 1);
}

// The folder in which the error of the callback ends it belongs to the pool.
TEST_F(Dir, ErrorsOfTheCallbackArePrintedOrEndTheTraversal) {
    make_files({"1", "2"});
    const size_t open_before = open_files();
    testing::internal::CaptureStderr();
    EXPECT_OK(traverse(0, fail));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 2);
    EXPECT_EQ(printed.substr(0, 14), "Error(7): mine");
    EXPECT_EQ(open_files(), open_before);
    EXPECT_CHAIN(traverse(KESTU_DIR_STOP, fail), 7, cannot.second, "mine");
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(open_files(), open_before + 1);
    apr_pool_clear(pool);
    EXPECT_OK(traverse(KESTU_DIR_STOP, [&](const char *, apr_pool_t *) {
        ++calls;
        return KestuDLlistStopWalking;
    }));
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(open_files(), open_before);
}

TEST_F(Dir, ReadsThatFailInARowAreRepeatedButNotForEver) {
    make_files({"1", "2"});
    testing::internal::CaptureStdout();
    reads_to_fail = 15;
    EXPECT_OK(traverse(0, [&](const char *, apr_pool_t *) {
        reads_to_fail = ++calls == 1 ? 15 : 0;
        return nullptr;
    }));
    fflush(stdout);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 30);
    EXPECT_EQ(printed.substr(0, 28), "Warning: info.name is NULL \n");

    testing::internal::CaptureStdout();
    reads_to_fail = INT_MAX;
    kestu_error_t *err = traverse(0, count);
    EXPECT_EQ(reads_to_fail, INT_MAX - 16);
    reads_to_fail = 0;
    fflush(stdout);
    testing::internal::GetCapturedStdout();
    EXPECT_CHAIN(err, cannot, Element(0, "Input/output error"));
}

TEST_F(Dir, DeepTreesNeedNeitherStackNorDescriptors) {
    std::string deepest;
    for (int i = 0; i < 500; ++i)
        deepest += "d/";
    make_files({deepest + "f"});
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit few = {.rlim_cur = open_files() + 3, .rlim_max = old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    run_on_small_stack(
        [&] { EXPECT_THAT(visited(KESTU_DIR_RECURSE), ElementsAre(deepest + "f")); });
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &old), 0);
}

TEST_F(Dir, PathsBeyondTheBoundOfTheSystemEndTheTraversal) {
    const std::string top = fs::current_path();
    ASSERT_EQ(chdir(root.c_str()), 0);
    const std::string name(255, 'd');
    for (int i = 0; i < PATH_MAX / 256 + 1; ++i)
        ASSERT_TRUE(mkdir(name.c_str(), 0755) == 0 && chdir(name.c_str()) == 0);
    ASSERT_EQ(chdir(top.c_str()), 0);
    EXPECT_CHAIN(traverse(KESTU_DIR_RECURSE, count), cannot, Element(0, "File name too long"));
}

// From the first file on no allocation succeeds. What the callback takes from its pool is given
// back before the next file.
TEST_F(Dir, AFolderOfAnySizeNeedsTheMemoryOfOneEntry) {
    make_files({"first"});
    for (int i = 0; i < 500; ++i)
        fs::create_symlink("nowhere", folder / ("a-link-of-some-length-" + std::to_string(i)));
    std::optional<AllocFailure> failure;
    kestu_error_t *err = traverse(KESTU_DIR_RECURSE, [&](const char *, apr_pool_t *entry_pool) {
        if (++calls == 1)
            failure.emplace(1, all_after | pools_too);
        EXPECT_TRUE(apr_palloc(entry_pool, 2000));
        return nullptr;
    });
    const bool asked_for_memory = failure->happened();
    failure.reset();
    EXPECT_FALSE(asked_for_memory);
    EXPECT_OK(err);
    EXPECT_EQ(calls, 501);
}

TEST_F(Dir, AnAllocationThatFailsEndsTheTraversalAndLeavesNothing) {
    make_files({"1", "a/1", "a/b/1", "c/1"});
    EXPECT_OK(traverse(KESTU_DIR_RECURSE, count)); // what the C library keeps from its first use
    const long before = live_blocks();
    const size_t failures = fail_each_allocation([&](size_t) {
        calls = 0;
        kestu_error_t *err = traverse(KESTU_DIR_RECURSE, count);
        EXPECT_TRUE(err ? err->message == cannot.second : calls == 4);
        kestu_error_clear(err);
        EXPECT_EQ(live_blocks(), before);
    });
    EXPECT_GE(failures, 4u + 3u - 1); // folders opened, and those kept for later
}
