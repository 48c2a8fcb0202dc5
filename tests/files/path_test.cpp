// The directory and the last component of a path.
#include "support/test.hpp"

using namespace kestu::test;

namespace {

using Half = size_t (*)(const char *path, char *out, size_t size);

// What a function writes, and what it returns, with room enough; the bytes behind stay as they
// were.
std::pair<std::string, size_t> half_of(Half half, const char *path) {
    char out[32];
    std::memset(out, '#', sizeof out);
    const size_t length = half(path, out, sizeof out);
    EXPECT_EQ(out[std::strlen(out) + 1], '#');
    return {out, length};
}

const struct {
    const char *path, *directory, *component;
} paths[] = {
    {nullptr, ".", "."},
    {"", ".", "."},
    {"/", "/", "/"},
    {"//", "/", "/"},
    {"///", "/", "/"},
    {"a", ".", "a"},
    {"a/", ".", "a"},
    {"a//", ".", "a"},
    {"/a", "/", "a"},
    {"//a", "/", "a"},
    {"a/b", "a", "b"},
    {"a//b", "a", "b"},
    {"/a/b", "/a", "b"},
    {"/a/b/", "/a", "b"},
    {"a/b/c", "a/b", "c"},
    {"/usr//lib//", "/usr", "lib"},
    {".", ".", "."},
    {"..", ".", ".."},
    {"./a", ".", "a"},
    {"//a//b//", "//a", "b"},
    {"a/\xff\\", "a", "\xff\\"},
};

} // namespace

TEST(Paths, HalvesOfEveryShape) {
    for (const auto &p : paths) {
        using Result = std::pair<std::string, size_t>;
        EXPECT_EQ(half_of(kestu_util_dirname, p.path), Result(p.directory, strlen(p.directory)))
            << (p.path ? p.path : "null");
        EXPECT_EQ(half_of(kestu_util_basename, p.path), Result(p.component, strlen(p.component)))
            << (p.path ? p.path : "null");
    }
}

TEST(Paths, WithoutRoomForACharacterNothingIsWritten) {
    char out = '#';
    for (const Half half : {kestu_util_dirname, kestu_util_basename})
        for (const char *path : {static_cast<const char *>(nullptr), "", "/", "a/b"})
            for (const size_t size : {0u, 1u})
                EXPECT_EQ(half(path, &out, size), 0u);
    EXPECT_EQ(out, '#');
}

TEST(Paths, ResultsThatDoNotFitAreCutAndTellTheirLength) {
    char out[3];
    EXPECT_EQ(kestu_util_dirname("/usr/lib", out, sizeof out), 4u);
    EXPECT_STREQ(out, "/u");
    EXPECT_EQ(kestu_util_basename("/usr/lib", out, sizeof out), 3u);
    EXPECT_STREQ(out, "li");
    EXPECT_EQ(kestu_util_basename("/usr/li", out, sizeof out), 2u);
    EXPECT_STREQ(out, "li");
    const std::string component(100000, 'c');
    std::string room(component.size() + 1, '#');
    EXPECT_EQ(kestu_util_basename((component + "/" + component).c_str(), room.data(), room.size()),
              component.size());
    EXPECT_EQ(room.c_str(), component);
}

TEST(Paths, TheResultMayOverwriteThePath) {
    char path[] = "first/second";
    EXPECT_EQ(kestu_util_basename(path, path, sizeof path), 6u);
    EXPECT_STREQ(path, "second");
    char other[] = "/first/second";
    EXPECT_EQ(kestu_util_dirname(other, other + 2, sizeof other - 2), 6u);
    EXPECT_STREQ(other + 2, "/first");
}

TEST(Paths, WithoutAPathNoMemoryIsNeeded) {
    for (const Half half : {kestu_util_dirname, kestu_util_basename})
        for (const char *path : {static_cast<const char *>(nullptr), ""}) {
            AllocFailure failure(1);
            char out[2];
            EXPECT_EQ(half(path, out, sizeof out), 1u);
            EXPECT_STREQ(out, ".");
        }
}

TEST(PathsDeathTest, WithoutMemoryForTheCopyTheProcessEnds) {
    char out[8];
    const auto starve = [&](Half half) {
        AllocFailure failure(1);
        half("a/b", out, sizeof out);
    };
    EXPECT_DEATH(starve(kestu_util_dirname), "Failed to allocate 4 bytes of memory");
    EXPECT_DEATH(starve(kestu_util_basename), "Failed to allocate 4 bytes of memory");
}
