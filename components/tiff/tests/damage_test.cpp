// Damaged files, limits, pages, tags, and writing.
#include "img/picture.hpp"
#include "support/alloc_failure.hpp"
#include "support/test.hpp"
#include "written.hpp"

#include "kestu_error_codes.h"

#include <cerrno>

using namespace kestu::test;

namespace {

std::string written(const std::vector<Layout> &pages) {
    const MemoryFile file;
    EXPECT_TRUE(write_file(file.path(), pages));
    return file.bytes();
}

// The entry of a classic little-endian file of one page with a tag.
std::string::size_type entry(const std::string &bytes, unsigned tag) {
    const auto number = [&](size_t at, size_t size) {
        size_t value = 0;
        for (size_t i = size; i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
        return value;
    };
    const size_t directory = number(4, 4);
    for (size_t i = 0; i < number(directory, 2); ++i)
        if (number(directory + 2 + 12 * i, 2) == tag)
            return directory + 2 + 12 * i;
    ADD_FAILURE() << "no tag " << tag;
    return 0;
}

// With another value for a tag, or, above it, without the tag.
constexpr unsigned dropped = 1U << 31;
std::string with(std::string bytes, unsigned tag, unsigned value) {
    const size_t at = entry(bytes, tag);
    return value == dropped ? bytes.replace(at, 2, u16({60000}))
                            : bytes.replace(at + 8, 4, u32({value}));
}

kestu_tiff_options_t limits(uint32_t page, uint64_t pixels = 0, uint64_t memory = 0) {
    kestu_tiff_options_t options{};
    options.page = page;
    options.max_pixels = pixels;
    options.max_memory = memory;
    return options;
}

struct Case {
    const char *what, *cause; // of which the message of the root has this much
    int code;
    std::string bytes;
    kestu_tiff_options_t options = {};
};

std::vector<Case> cases() {
    const std::string plain = written({{}}), packed = written({{.compression = 8}});
    const std::string tiled = written({{.rows = 16, .tile = 16}});
    const std::string two = written({{}, {.bits = 16}});
    std::string holes = packed;
    holes.replace(8, 200, 200, '\xA5');
    const int structure = KESTU_ERR_IMAGE_STRUCTURE, data = KESTU_ERR_INCOMPLETE_DATA;
    return {
        {"empty", "is not TIFF", KESTU_ERR_NOT_TIFF, ""},
        {"text", "is not TIFF", KESTU_ERR_NOT_TIFF, "II is a text"},
        {"head only", "libtiff: ", structure, plain.substr(0, 8)},
        {"cut directory", "libtiff: ", structure, plain.substr(0, entry(plain, 262) + 5)},
        {"strips behind the end", "strip 7 has 148 bytes of 259", data, with(plain, 257, 53000)},
        {"a strip that is too short", "bytes of", data, with(plain, 256, 40)},
        {"holes in deflate", "libtiff: ", data, holes},
        {"no size", "", structure, with(plain, 256, dropped)},
        {"no photometric", "photometric interpretation is missing", structure,
         with(plain, 262, dropped)},
        {"no palette", "\"Colormap\"", structure, with(written({{.bits = 4}}), 262, 3)},
        {"one channel of RGB", "Too few samples a pixel: 1", structure, with(plain, 262, 2)},
        {"complex", "", structure, with(plain, 339, 5)},
        {"integers of 64 bits", "this many bits are not read: 64", structure, with(plain, 258, 64)},
        {"colour filters", "libtiff: ", structure, with(plain, 262, 32803)},
        {"unknown compression", "does not know the compression 4711", data, with(plain, 259, 4711)},
        {"huge tiles", "", structure, with(with(tiled, 322, 1U << 30), 323, 1U << 30)},
        {"page 3 of 2", "There is no page 3: the file has 2.", structure, two, limits(3)},
        {"too many pixels", "37 x 53 pixels, more than the limit of 1960", structure, plain,
         limits(1, 1960)},
        {"too much memory", "of memory are needed, and 2000 are the limit", structure, plain,
         limits(1, 0, 2000)},
    };
}

} // namespace

TEST(TiffDamage, IsRefusedInAChainAndPrintsNothing) {
    testing::internal::CaptureStderr();
    for (const Case &c : cases()) {
        SCOPED_TRACE(c.what);
        const MemoryFile file(c.bytes);
        Image img;
        errno = 77;
        const auto chain = take_chain(kestu_tiff_read(file.path(), &c.options, &img, nullptr));
        EXPECT_EQ(errno, 77);
        ASSERT_GE(chain.size(), 2U);
        EXPECT_EQ(chain.front(), (Element{c.code, "Cannot read TIFF page."}));
        EXPECT_THAT(chain.back().second, testing::HasSubstr(c.cause));
        EXPECT_FALSE(img.holds_arrays());
    }
    Image img;
    EXPECT_CHAIN(kestu_tiff_read("none.tif", nullptr, &img, nullptr), KESTU_ERR_OPEN,
                 "Cannot read TIFF page.", "Cannot open file 'none.tif'");
    EXPECT_CHAIN(kestu_tiff_read("/", nullptr, &img, nullptr), KESTU_ERR_READ,
                 "Cannot read TIFF page.", "'/' is a folder.");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(TiffDamage, IsCountedWithLenience) {
    kestu_tiff_options_t lenient{};
    lenient.lenient = 1;
    const std::string plain = written({{}});
    const MemoryFile file(with(plain, 257, 60)); // 7 more rows than there are
    Image img;
    kestu_tiff_info_t info;
    ASSERT_OK(kestu_tiff_read(file.path(), &lenient, &img, &info));
    EXPECT_EQ(img.height, 60);
    EXPECT_GE(info.lost, 37U * 7);
    EXPECT_EQ(img.data8[59][0], 0);
    EXPECT_EQ(img.data8[0][0], level({}, 0, 0));
}

// Bombs are a few bytes that claim much: what is asked for stays below the limit.
TEST(TiffDamage, BombsMeetTheLimits) {
    std::string bomb = written({{.compression = 8, .rows = 53}});
    bomb = with(with(with(bomb, 256, 1 << 15), 257, 1 << 15), 278, 1 << 15);
    const MemoryFile file(bomb);
    const kestu_tiff_options_t options = limits(1, 0, 1 << 20);
    Image img;
    EXPECT_CHAIN(kestu_tiff_read(file.path(), &options, &img, nullptr), KESTU_ERR_IMAGE_STRUCTURE,
                 "Cannot read TIFF page.",
                 "1074003968 bytes of memory are needed, and 1048576 are the limit.");
    // Row by row the same claim is found out at its first row.
    kestu_tiff_reader_t *reader = nullptr;
    ASSERT_OK(kestu_tiff_open(file.path(), &options, &reader));
    std::vector<uint8_t> row(1 << 15);
    const auto chain = take_chain(kestu_tiff_row(reader, row.data()));
    ASSERT_FALSE(chain.empty());
    EXPECT_EQ(chain[0].first, KESTU_ERR_INCOMPLETE_DATA);
    kestu_tiff_close(&reader);
    EXPECT_EQ(reader, nullptr);
}

TEST(TiffDamage, MissingMemoryIsAFailure) {
    const MemoryFile file(
        written({{.bits = 12, .samples = 3, .photometric = 2, .orientation = 6}}));
    EXPECT_GT(fail_each_allocation([&](size_t) {
                  Image img;
                  kestu_error_clear(kestu_tiff_read(file.path(), nullptr, &img, nullptr));
                  EXPECT_EQ(img.type, img.data16 ? 1 : 0);
              }),
              20U);
}

TEST(TiffPages, AreCountedAndPlainOnesToldApart) {
    const struct {
        std::vector<Layout> pages;
        int plain;
    } files[] = {{{{}}, 1},
                 {{{.bits = 16}}, 1},
                 {{{}, {}}, 0},
                 {{{.mode = "wb"}}, 0},
                 {{{.mode = "w8l"}}, 0},
                 {{{.bits = 4}}, 0},
                 {{{.format = SAMPLEFORMAT_INT}}, 0},
                 {{{.bits = 16, .format = SAMPLEFORMAT_IEEEFP}}, 0},
                 {{{.samples = 2}}, 0},
                 {{{.compression = 5}}, 0},
                 {{{.orientation = 3}}, 0},
                 {{{.rows = 16, .tile = 16}}, 0},
                 {{{.rows = 27}}, 0}}; // two strips, whose sizes stand in the entry
    for (const auto &[pages, plain] : files) {
        SCOPED_TRACE(pages[0]);
        const MemoryFile file(written(pages));
        for (uint32_t page = 1; page <= pages.size(); ++page) {
            const kestu_tiff_options_t options = limits(page);
            kestu_tiff_reader_t *reader = nullptr;
            ASSERT_OK(kestu_tiff_open(file.path(), &options, &reader));
            EXPECT_EQ(kestu_tiff_info(reader)->page, page);
            EXPECT_EQ(kestu_tiff_info(reader)->pages, pages.size());
            EXPECT_EQ(kestu_tiff_info(reader)->plain, plain);
            kestu_tiff_close(&reader);
        }
        if (plain) {
            Image wide, strict;
            ASSERT_OK(kestu_tiff_read(file.path(), nullptr, &wide, nullptr));
            ASSERT_OK(kestu_img_read(file.path(), &strict));
            EXPECT_EQ(wide.pixels(), strict.pixels());
        }
    }
}

// What is written with options is read back with all that was said; tags are listed as texts.
TEST(TiffWriting, KeepsResolutionAndSaysWhatItIsTold) {
    for (const int deflate : {0, 1})
        for (const int unit : {2, 3}) {
            Picture<uint16_t> picture(300, 200);
            picture.img.photometric = 0;
            picture.img.resunit = unit;
            picture.img.xres = 254;
            picture.img.yres = 508;
            kestu_tiff_write_options_t options{};
            options.deflate = deflate;
            options.description = "a\tslide";
            options.software = "test";
            const MemoryFile file;
            ASSERT_OK(kestu_tiff_write(file.path(), &picture.img, &options));
            Image img;
            kestu_tiff_info_t info;
            ASSERT_OK(kestu_tiff_read(file.path(), nullptr, &img, &info));
            EXPECT_EQ(img.pixels(), picture.pixels());
            EXPECT_EQ(img.photometric, 0);
            EXPECT_NEAR(img.xres, 254, 1e-4);
            EXPECT_NEAR(img.yres, 508, 1e-4);
            EXPECT_EQ(img.resunit, unit);
            EXPECT_EQ(info.compression, deflate ? 8 : 1);
            EXPECT_STREQ(img.software, "test");

            kestu_tiff_reader_t *reader = nullptr;
            ASSERT_OK(kestu_tiff_open(file.path(), nullptr, &reader));
            std::string tags;
            const auto add = [](int tag, const char *name, const char *value, void *baton) {
                *static_cast<std::string *>(baton) +=
                    std::to_string(tag) + ' ' + name + '=' + value + '\n';
                return tag == TIFFTAG_SOFTWARE ? 5 : 0;
            };
            EXPECT_EQ(kestu_tiff_tags(reader, add, &tags), 5);
            EXPECT_THAT(tags, testing::HasSubstr("257 ImageLength=300\n"));
            EXPECT_THAT(tags, testing::HasSubstr("270 ImageDescription=a\\x09slide\n"));
            EXPECT_THAT(tags, testing::HasSubstr(unit == 2 ? "282 XResolution=254\n"
                                                           : "282 XResolution=100\n"));
            EXPECT_THAT(tags, testing::EndsWith("305 Software=test\n"));
            kestu_tiff_close(&reader);
        }
}

TEST(TiffWriting, RefusesWhatIsNotWhole) {
    Picture<uint8_t> picture(3, 4);
    kestu_tiff_writer_t *writer = nullptr;
    EXPECT_CHAIN(kestu_tiff_create("no/such", &picture.img, nullptr, &writer), KESTU_ERR_OPEN,
                 "Cannot write TIFF image.", "Cannot open file 'no/such'");
    const MemoryFile file;
    ASSERT_OK(kestu_tiff_create(file.path(), &picture.img, nullptr, &writer));
    ASSERT_OK(kestu_tiff_put_row(writer, picture.rows[0]));
    EXPECT_CHAIN(kestu_tiff_finish(&writer), KESTU_ERR_IMAGE_STRUCTURE, "Cannot write TIFF image.",
                 "2 rows of 3 are missing.");
    EXPECT_EQ(writer, nullptr);
    EXPECT_NE(take_chain(kestu_tiff_write("/dev/full", &picture.img, nullptr)).size(), 0U);
    picture.img.samples = 3;
    EXPECT_CHAIN(kestu_tiff_write(file.path(), &picture.img, nullptr), KESTU_ERR_IMAGE_STRUCTURE,
                 "Cannot write TIFF image.", "The image is not grayscale of 8 or 16 bits.");
}
