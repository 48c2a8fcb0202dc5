// Walking files, on trees made for each test.
#include "kestu_dir.h"
#include "kestu_lib.h"

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <dirent.h>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace kestu::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
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

class Dir : public testing::Test {
  protected:
    Dir() {
        char name[] = "/tmp/kestu-dir-XXXXXX";
        root = mkdtemp(name);
        chmod(root.c_str(), 0755);
        apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
    }
    ~Dir() override {
        apr_pool_destroy(pool);
        if (std::system(("rm -rf " + root).c_str()) != 0)
            ADD_FAILURE() << root << " stays";
    }

    void file(const std::string &name) {
        fs::create_directories(fs::path(root + "/" + name).parent_path());
        std::ofstream(root + "/" + name) << name;
    }

    // The paths below the root that a traversal with `flags` visits.
    std::vector<std::string> visited(int flags, const char *include = nullptr,
                                     const char *exclude = nullptr) {
        seen.clear();
        kestu_dir_traverse_t options = {.flags = flags,
                                        .exclude = nullptr,
                                        .include = nullptr,
                                        .callback = collect,
                                        .user_data = this};
        EXPECT_OK(kestu_dir_traverse(root.c_str(), include, exclude, &options, pool));
        return seen;
    }

    // Traverses with a callback that does what `action` says.
    kestu_error_t *traverse(int flags, std::function<kestu_error_t *(const char *)> action) {
        kestu_dir_traverse_t options = {.flags = flags,
                                        .exclude = nullptr,
                                        .include = nullptr,
                                        .callback = act,
                                        .user_data = &action};
        return kestu_dir_traverse(root.c_str(), nullptr, nullptr, &options, pool);
    }

    std::string root;
    std::vector<std::string> seen;
    apr_pool_t *pool = nullptr;

  private:
    static kestu_error_t *collect(const char *path, void *user_data, apr_pool_t *pool) {
        auto &test = *static_cast<Dir *>(user_data);
        EXPECT_NE(apr_palloc(pool, 100000), nullptr);
        EXPECT_EQ(std::string(path).substr(0, test.root.size() + 1), test.root + "/");
        test.seen.emplace_back(path + test.root.size() + 1);
        return nullptr;
    }
    static kestu_error_t *act(const char *path, void *user_data, apr_pool_t *) {
        return (*static_cast<std::function<kestu_error_t *(const char *)> *>(user_data))(path);
    }
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
        if (entry.symlink_status().type() == fs::file_type::directory)
            folders.push_back(name);
        else
            paths.push_back(prefix + name);
    }
    for (const std::string &name : folders)
        list_in_order(dir + "/" + name, prefix + name + "/", paths);
}

} // namespace

TEST_F(Dir, FilesOfAFolderComeBeforeItsSubfoldersAndEachOfThoseAsAWhole) {
    for (const char *folder :
         {"", "x/", "y/", "z/", "y/b/", "y/a/", "y/a/deep/", "z/only/folders/"})
        for (const char *name : {"3", "1", "2"})
            if (*folder != 'z' || name[0] == '1')
                file(std::string(folder) + name);
    std::vector<std::string> expected;
    list_in_order(root, "", expected);
    EXPECT_EQ(visited(KESTU_DIR_RECURSE), expected);
    types_are_told = false;
    EXPECT_EQ(visited(KESTU_DIR_RECURSE), expected);
    EXPECT_THAT(visited(0), UnorderedElementsAre("1", "2", "3"));
    types_are_told = true;
}

TEST_F(Dir, OnlyFilesAndLinksAreReportedAndLinksAreNotFollowed) {
    file("file");
    file("sub/inner");
    fs::create_directory_symlink(".", root + "/loop");
    fs::create_symlink("nowhere", root + "/dangling");
    ASSERT_EQ(mkfifo((root + "/pipe").c_str(), 0600), 0);
    for (const bool told : {true, false}) {
        types_are_told = told;
        EXPECT_THAT(visited(KESTU_DIR_RECURSE),
                    UnorderedElementsAre("file", "loop", "dangling", "sub/inner"));
        EXPECT_THAT(visited(0), UnorderedElementsAre("file", "loop", "dangling"));
    }
    types_are_told = true;
}

TEST_F(Dir, NamesOfAnyBytesAndOfFullLengthAreVisited) {
    std::string every_byte;
    for (int byte = 1; byte < 256; ++byte)
        every_byte += byte == '/' ? 'x' : static_cast<char>(byte);
    ASSERT_EQ(every_byte.size(), 255u);
    const std::string longest(255, 'n');
    file(every_byte + "/" + longest);
    file("...");
    EXPECT_THAT(visited(KESTU_DIR_RECURSE),
                UnorderedElementsAre("...", every_byte + "/" + longest));
}

TEST_F(Dir, ListsFilterTheWholePath) {
    for (const char *name : {"a.c", "b.h", "c.o", "sub/d.c", "sub/.e.c", "F.C"})
        file(name);
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
}

TEST_F(Dir, ListsThatAreThereStayWithoutATextForThem) {
    file("a.c");
    file("b.h");
    seen.clear();
    int calls = 0;
    kestu_dir_traverse_t options = {};
    options.user_data = &calls;
    options.callback = [](const char *, void *user_data, apr_pool_t *) -> kestu_error_t * {
        ++*static_cast<int *>(user_data);
        return nullptr;
    };
    compilePattern("*.c", &options.include, pool);
    apr_array_header_t *const compiled = options.include;
    EXPECT_OK(kestu_dir_traverse(root.c_str(), nullptr, nullptr, &options, pool));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(options.include, compiled);
    EXPECT_OK(kestu_dir_traverse(root.c_str(), "*", "*.h;*.c", &options, pool));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(options.exclude->nelts, 2);
}

TEST_F(Dir, PatternsAreThePiecesBetweenSemicolons) {
    apr_array_header_t *array = nullptr;
    const kestu_dir_traverse_t flags = {.flags = KESTU_DIR_CASE_BLIND | KESTU_DIR_RECURSE,
                                        .exclude = nullptr,
                                        .include = nullptr,
                                        .callback = nullptr,
                                        .user_data = nullptr};
    compilePattern(nullptr, &array, pool);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(matchToCompositePattern("x", array, &flags), 1);
    EXPECT_EQ(matchToCompositePattern(nullptr, array, &flags), 1);
    compilePattern(";; a ;b?;;[c-e]*;", &array, pool);
    ASSERT_EQ(array->nelts, 3);
    EXPECT_STREQ(reinterpret_cast<char **>(array->elts)[0], " a ");
    for (const char *path : {" a ", "bx", "B\xff", "eeee", "D"})
        EXPECT_EQ(matchToCompositePattern(path, array, &flags), 1) << path;
    for (const char *path : {"a", "b", "", "f"})
        EXPECT_EQ(matchToCompositePattern(path, array, &flags), 0) << path;
    EXPECT_EQ(matchToCompositePattern(nullptr, array, &flags), 0);
    char added[] = "f";
    *static_cast<char **>(apr_array_push(array)) = added; // users extend lists
    EXPECT_EQ(matchToCompositePattern("f", array, &flags), 1);
    compilePattern("", &array, pool);
    EXPECT_EQ(array->nelts, 0);
    EXPECT_EQ(matchToCompositePattern("", array, &flags), 0);
    *static_cast<char **>(apr_array_push(array)) = added;
    EXPECT_EQ(matchToCompositePattern("F", array, &flags), 1);
}

TEST_F(Dir, AFolderThatCannotBeOpenedEndsTheTraversal) {
    const size_t open_before = open_files();
    kestu_dir_traverse_t options = {};
    EXPECT_CHAIN(kestu_dir_traverse((root + "/none").c_str(), "*", nullptr, &options, pool), cannot,
                 Element(0, "(" + root + "/none): No such file or directory"));
    file("a/1");
    file("b/1");
    std::string gone;
    kestu_error_t *err = traverse(KESTU_DIR_RECURSE, [&](const std::string &path) {
        EXPECT_EQ(gone, "");
        gone = root + (path == root + "/a/1" ? "/b" : "/a");
        fs::remove_all(gone);
        return nullptr;
    });
    EXPECT_CHAIN(err, cannot, Element(0, "(" + gone + "): No such file or directory"));
    EXPECT_EQ(open_files(), open_before);
}

TEST_F(Dir, FilesThatVanishOrCannotBeLookedUpArePassedOver) {
    for (const char *name : {"1", "2", "3", "4"})
        file(name);
    int calls = 0;
    EXPECT_OK(traverse(0, [&](const std::string &path) {
        ++calls;
        for (const auto &entry : fs::directory_iterator(root))
            if (entry.path() != path)
                fs::remove(entry.path());
        return nullptr;
    }));
    EXPECT_EQ(calls, 1);

    file("locked/file");
    ASSERT_EQ(chmod((root + "/locked").c_str(), 0444), 0);
    const bool was_root = geteuid() == 0;
    if (was_root && seteuid(65534) != 0)
        GTEST_SKIP() << "cannot become a user without rights";
    const auto with_folder_locked = visited(KESTU_DIR_RECURSE);
    ASSERT_TRUE(!was_root || seteuid(0) == 0);
    chmod((root + "/locked").c_str(), 0755);
    EXPECT_EQ(with_folder_locked.size(), 1u);
}

TEST_F(Dir, ErrorsOfTheCallbackArePrintedOrEndTheTraversal) {
    file("1");
    file("2");
    int calls = 0;
    const auto fails = [&](const char *) {
        ++calls;
        return kestu_error_create(0, 7, nullptr, "mine");
    };
    testing::internal::CaptureStderr();
    EXPECT_OK(traverse(0, fails));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 2);
    EXPECT_EQ(printed.substr(0, 14), "Error(7): mine");
    EXPECT_CHAIN(traverse(KESTU_DIR_STOP, fails), Element(7, cannot.second), Element(7, "mine"));
    EXPECT_EQ(calls, 3);
}

// The folder belongs to the pool then.
TEST_F(Dir, TheFolderOfAnErrorStaysOpenUntilThePoolIsCleared) {
    file("1");
    const size_t open_before = open_files();
    kestu_error_clear(traverse(
        KESTU_DIR_STOP, [](const char *) { return kestu_error_create(0, 7, nullptr, "mine"); }));
    EXPECT_EQ(open_files(), open_before + 1);
    apr_pool_clear(pool);
    EXPECT_EQ(open_files(), open_before);
}

TEST_F(Dir, TheSentinelEndsTheTraversalWithoutAFailure) {
    file("a/1");
    file("b/1");
    const size_t open_before = open_files();
    for (const int flags : {int{KESTU_DIR_RECURSE}, KESTU_DIR_RECURSE | KESTU_DIR_STOP}) {
        int calls = 0;
        EXPECT_OK(traverse(flags, [&](const char *) {
            ++calls;
            return KestuDLlistStopWalking;
        }));
        EXPECT_EQ(calls, 1);
    }
    EXPECT_STREQ(KestuDLlistStopWalking->message, "KestuDLlistStopWalking");
    EXPECT_EQ(open_files(), open_before);
}

TEST_F(Dir, ReadsThatFailAreRepeatedButNotForEver) {
    file("1");
    file("2");
    testing::internal::CaptureStdout();
    reads_to_fail = 15;
    const auto seen_after_failures = visited(0);
    fflush(stdout);
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_THAT(seen_after_failures, UnorderedElementsAre("1", "2"));
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 15);
    EXPECT_EQ(printed.substr(0, 28), "Warning: info.name is NULL \n");

    testing::internal::CaptureStdout();
    reads_to_fail = INT_MAX;
    kestu_error_t *err = traverse(0, [](const char *) { return nullptr; });
    EXPECT_EQ(reads_to_fail, INT_MAX - 16);
    reads_to_fail = 0;
    fflush(stdout);
    testing::internal::GetCapturedStdout();
    EXPECT_CHAIN(err, cannot, Element(0, "Input/output error"));
}

TEST_F(Dir, DeepTreesNeedNeitherStackNorDescriptors) {
    constexpr int depth = 200;
    std::string deepest;
    for (int i = 0; i < depth; ++i)
        deepest += "d/";
    file(deepest + "f");
    rlimit old;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit few = {.rlim_cur = open_files() + 3, .rlim_max = old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, 128 * 1024);
    const auto body = [](void *test) -> void * {
        static_cast<Dir_DeepTreesNeedNeitherStackNorDescriptors_Test *>(test)->visited(
            KESTU_DIR_RECURSE);
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &small, body, this), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&small);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &old), 0);
    EXPECT_THAT(seen, ElementsAre(deepest + "f"));
}

TEST_F(Dir, PathsBeyondTheBoundOfTheSystemEndTheTraversal) {
    const std::string top = fs::current_path();
    ASSERT_EQ(chdir(root.c_str()), 0);
    const std::string name(255, 'd');
    for (int i = 0; i < PATH_MAX / 256 + 1; ++i)
        ASSERT_TRUE(mkdir(name.c_str(), 0755) == 0 && chdir(name.c_str()) == 0);
    ASSERT_EQ(chdir(top.c_str()), 0);
    EXPECT_CHAIN(traverse(KESTU_DIR_RECURSE, [](const char *) { return nullptr; }), cannot,
                 Element(0, "File name too long"));
}

// From the first file on no allocation succeeds.
TEST_F(Dir, AFolderOfAnySizeNeedsTheMemoryOfOneEntry) {
    file("first");
    for (int i = 0; i < 500; ++i)
        fs::create_symlink("nowhere", root + "/a-link-of-some-length-" + std::to_string(i));
    int calls = 0;
    std::optional<AllocFailure> failure;
    kestu_error_t *err = traverse(KESTU_DIR_RECURSE, [&](const char *) {
        if (++calls == 1)
            failure.emplace(1, all_after | pools_too);
        return nullptr;
    });
    const bool asked_for_memory = failure->happened();
    failure.reset();
    EXPECT_FALSE(asked_for_memory);
    EXPECT_OK(err);
    EXPECT_EQ(calls, 501);
}

TEST_F(Dir, AnAllocationThatFailsEndsTheTraversalAndLeavesNothing) {
    for (const char *name : {"1", "a/1", "a/b/1", "c/1"})
        file(name);
    int calls = 0;
    const auto count = [&](const char *) {
        ++calls;
        return nullptr;
    };
    EXPECT_OK(traverse(KESTU_DIR_RECURSE, count)); // what the C library keeps from its first use
    size_t n = 1;
    for (bool failed = true; failed; ++n) {
        calls = 0;
        const long before = live_blocks();
        kestu_error_t *err;
        {
            AllocFailure failure(n);
            err = traverse(KESTU_DIR_RECURSE, count);
            failed = failure.happened();
        }
        EXPECT_EQ(live_blocks(), before);
        if (failed)
            EXPECT_EQ(take_chain(err).at(0).second, cannot.second);
        else
            EXPECT_OK(err);
    }
    EXPECT_EQ(calls, 4);
    EXPECT_GE(n, 4u + 3u); // folders opened, and those kept for later
}
