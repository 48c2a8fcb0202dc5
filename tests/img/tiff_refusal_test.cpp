// TIFF files that are refused: with which errors, and that nothing is left behind.
#include "read_bytes.hpp"
#include "support/test.hpp"

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

using namespace kestu::test;

namespace {

constexpr const char *reading = "Cannot read TIFF image.";
constexpr const char *reading_info = "Cannot read TIFF information from file.";

const Element too_short(120031, "");
const Element not_complete(120153, "");
const Element no_meaning(120152, "Unknown photometric interpretation");

// Refused with a root cause by both readers, but that the one of tags alone leaves pixels alone.
void expect_refused(std::string_view bytes, const Element &root) {
    Image img, info;
    EXPECT_CHAIN(read_bytes(bytes, img), Element(root.first, reading), root);
    EXPECT_FALSE(img.holds_arrays() || img.type != 0);
    kestu_error_t *err = read_bytes(bytes, info, kestu::read_tiff_info);
    if (root == not_complete || root == no_meaning) {
        EXPECT_OK(err);
    } else {
        EXPECT_CHAIN(err, Element(root.first, reading_info), root);
        EXPECT_FALSE(info.holds_arrays() || info.type != 0);
    }
}

} // namespace

TEST(TiffRefusal, FilesThatHoldNoImage) {
    const Element unknown(120150, "Unknown data format.");
    const Element loop(120152, "TIFF directories form a loop.");
    const auto empty = [](uint32_t next) { return tiff_directory({}, next); };
    std::string shared = tiff_header(8) + std::string(2000, '\0');
    for (unsigned at = 8; at < 128; at += 6) {
        shared.replace(at, 2, u16({100}));
        shared.replace(at + 2 + 100 * 12, 4, u32({at + 6}));
    }
    const struct {
        const char *what;
        std::string bytes;
        Element root;
    } cases[] = {
        {"big-endian", "MM\0*\0\0\0\10"s, {120150, "Motorola TIFF is not supported."}},
        {"IM", "IM*\0"s, unknown},
        {"another number", "II+\0"s, {120150, "Unknown TIFF format."}},
        {"no directory", "II*\0\0\0\0\0"s, {0, "No image data were found."}},
        {"a directory that is its next", tiff_header(8) + empty(8), loop},
        {"a loop at the end", tiff_header(8) + empty(14) + empty(20) + empty(14), loop},
        {"a long loop", tiff_header(8) + empty(14) + empty(20) + empty(8) + std::string(99, 0),
         loop},
        {"overlaps", shared, {120152, "TIFF directories share bytes."}},
        {"strips without bytes",
         Tiff().drop(279).bytes(),
         {120152, "Inconsistent number of strips [1 vs. 0]"}},
        {"levels without a meaning", Tiff().drop(262).bytes(), no_meaning},
    };
    for (const auto &[what, bytes, root] : cases) {
        SCOPED_TRACE(what);
        expect_refused(bytes, root);
    }
}

TEST(TiffRefusal, TagsThatBreakTheirRulesOrReachPastTheEndOfTheFile) {
    const auto invalid = [](const std::string &entry) {
        return Element(120151, "Invalid TIFF tag [" + entry + "]");
    };
    const struct {
        Field field;
        Element root;
    } cases[] = {
        {{258, longs, 1, 8}, invalid("name=258 type=4 length=1 offset=8")},
        {{258, shorts, 4, 33}, invalid("name=258 type=3 length=4 offset=33")},
        {{277, shorts, 3, 1}, invalid("name=277 type=3 length=3 offset=1")},
        {{277, 65535, ~0u, 1u << 31}, invalid("name=277 type=65535 length=-1 offset=-2147483648")},
        {{283, rational, 1, 12}, invalid("name=283 type=5 length=1 offset=12")},
        {{296, shorts, 1, 1}, {120152, "Unknown resolution units [1] in TIFF file"}},
        {{258, shorts, 3, 0x7fffffff}, too_short},
        {{273, longs, 2, 0xffffffff}, too_short},
        {{273, longs, 0xffffffff, 8}, too_short},
        {{279, longs, 0x80000000, 8}, too_short},
        {{279, shorts, 2, 0x2000}, too_short},
        {{282, rational, 1, 1000}, too_short},
        {{283, rational, 1, 0xffffffff}, too_short},
        {{305, ascii, 0xffffffff, 8}, too_short},
        {{305, ascii, 1, 1000}, too_short},
        {{279, longs, 1, 1000}, not_complete},
        {{273, longs, 1, 0xffffffff}, not_complete},
    };
    for (const auto &[field, root] : cases) {
        SCOPED_TRACE(testing::Message() << field.tag << ": " << field.count << ", " << field.value);
        const std::string pixels_and_ratio = "\1\2\3\4\1\0\0\0\0\0\0\0"s;
        expect_refused(Tiff(2, 2, 8, pixels_and_ratio).set(field).bytes(), root);
    }
}

TEST(TiffRefusal, MoreNumbersThanAnIntCounts) {
    MemoryFile file(Tiff().set({305, ascii, 1u << 31, 8}).bytes());
    file.write_at(3ull << 30, "end");
    Image img;
    EXPECT_CHAIN(kestu_img_read_tiff(file.path(), &img), 120151, reading,
                 "Invalid TIFF tag [name=305 type=2 length=-2147483648 offset=8]");
}

// Nothing that a small file claims makes the reader ask for much memory.
TEST(TiffRefusal, ImagesThatClaimMoreThanTheFileHolds) {
    const struct {
        uint32_t width, height, bits;
    } cases[] = {{1, 1u << 31, 8},   {1, 0x7fffffff, 8},           {0, 0x7fffffff, 16},
                 {0xffffffff, 1, 8}, {0xffffffff, 0xffffffff, 16}, {1, 1'000'005, 8},
                 {1024, 1025, 8},    {(1 << 19) + 3, 1, 16},       {65536, 65536, 16}};
    for (const auto &[width, height, bits] : cases) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        expect_refused(Tiff(width, height, bits, "abcd").bytes(), not_complete);
    }
    EXPECT_EQ(pixels_of(Tiff((1 << 19) + 2, 1, 16, "a\0b\0"s).bytes())[1], 'b');
    Tiff shared(4096, 4096, 8, std::string(60000, 'a'));
    shared.set_strips(std::vector(1000, std::pair(0u, 60000u)), shorts);
    expect_refused(shared.bytes(), not_complete);
    EXPECT_EQ(pixels_of(shared.set(257, 256).bytes()), std::vector<int>(1 << 20, 'a'));
}

TEST(TiffRefusal, AMatrixWithoutColumnsIsTheAllocatorsError) {
    Image img;
    EXPECT_CHAIN(read_bytes(Tiff().set(256, 0).bytes(), img), 120010, reading,
                 "Cannot allocate matrix.", "Cannot allocate memory for 0 elements.");
    EXPECT_FALSE(img.holds_arrays());
}

TEST(TiffRefusal, AFileCutAnywhereLeavesNothingBehind) {
    const std::string pixels = "abcdef";
    const std::vector<Field> fields = {{256, longs, 1, 3},      {257, longs, 1, 2},
                                       {258, shorts, 1, 8},     {262, shorts, 1, 1},
                                       {282, rational, 1, 110}, {305, ascii, 10, 118},
                                       {273, longs, 2, 128},    {279, shorts, 2, 136}};
    const std::string tags = tiff_header(8) + tiff_directory(fields) + u32({300, 1}) +
                             "a program\0"s + u32({140, 142}) + u16({2, 4});
    ASSERT_EQ(tags.size(), 140u);
    const std::string file = tags + pixels;
    EXPECT_EQ(pixels_of(file), std::vector<int>(pixels.begin(), pixels.end()));
    expect_refused("", too_short);
    SCOPED_TRACE("cut"); // what is kept from the first error and the first trace on
    const long blocks = live_blocks();
    for (size_t size = 0; size < file.size(); ++size) {
        SCOPED_TRACE(size);
        const Element &root = size < tags.size() ? too_short : not_complete;
        expect_refused(file.substr(0, size), root);
        const MemoryFile cut(file.substr(0, size));
        Image img;
        EXPECT_CHAIN(kestu_img_read_tiff(cut.path(), &img), Element(root.first, reading), root);
    }
    EXPECT_EQ(live_blocks(), blocks);
}

TEST(TiffRefusal, TheDispatcherWrapsAndForgetsWhatIsNotTiff) {
    Image img;
    EXPECT_CHAIN(read_bytes("This is a text.", img, kestu::read_image), 120154, "");
    EXPECT_CHAIN(read_bytes("II*", img, kestu::read_image), Element(120031, "Cannot read image."),
                 Element(120031, reading_info), too_short);
    EXPECT_CHAIN(read_bytes(Tiff().drop(262).bytes(), img, kestu::read_image),
                 Element(120152, "Cannot read image."), Element(120152, reading), no_meaning);
    EXPECT_FALSE(img.holds_arrays());
}

TEST(TiffRefusal, PathsThatLeadToNoFile) {
    const TemporaryFolder folder;
    const std::string loop = folder / "loop";
    const std::string fifo = folder / "fifo";
    std::filesystem::create_symlink(loop, loop);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    Image img;
    for (const std::string &path : {folder / "missing", loop}) {
        std::fill_n(reinterpret_cast<char *>(&img), sizeof(kestu_img_t), '\xff');
        EXPECT_CHAIN(kestu_img_read_tiff(path.c_str(), &img), 120030, reading,
                     "Cannot open file '" + path + "'");
        EXPECT_FALSE(img.holds_arrays());
    }
    for (const std::string &path : {folder.path, "/dev/null"s, "/proc/self/mem"s})
        EXPECT_CHAIN(kestu_img_read_tiff(path.c_str(), &img), Element(120031, reading), too_short);
    const int end = open(fifo.c_str(), O_RDWR | O_CLOEXEC);
    const std::string bytes = Tiff().bytes();
    ASSERT_EQ(write(end, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    EXPECT_CHAIN(kestu_img_read_tiff(fifo.c_str(), &img), 120033, reading, "");
    close(end);
}

TEST(TiffRefusal, WithoutMemoryNothingIsLeftBehind) {
    for (const uint32_t bits : {8, 16}) {
        Tiff tiff(2, 3, bits, std::string(12, '\1'));
        tiff.set({305, ascii, 5, tiff.put("text")}).set_strips({{0, 6}, {6, 6}}, longs);
        const MemoryFile file(tiff.bytes());
        const long blocks = live_blocks();
        const size_t failures = fail_each_allocation([&](size_t) {
            Image img;
            kestu_error_t *err = kestu_img_read(file.path(), &img);
            EXPECT_EQ(img.holds_arrays(), err == nullptr);
            const int code = err ? err->code : 120012;
            kestu_error_clear(err);
            EXPECT_TRUE(code == 120012 || code == 120030);
        });
        EXPECT_EQ(failures, 9u);
        EXPECT_EQ(live_blocks(), blocks);
    }
}
