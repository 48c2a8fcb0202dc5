// Reading TIFF files made by hand: what is understood.
#include "kestu_img.h"

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "tiff_bytes.hpp"

#include <algorithm>

using namespace kestu::test;
using namespace std::string_literals;
using testing::ElementsAre;

namespace {

constexpr const char *reading = "Cannot read TIFF image.";
constexpr const char *reading_info = "Cannot read TIFF information from file.";

} // namespace

TEST(TiffRead, FillsTheRecord) {
    Tiff tiff = Tiff::gray(3, 2, 8, "abcdef");
    tiff.set(259, 5).set(284, 2).set(296, 2).set({305, ascii, 4, tiff.put("test!")});
    tiff.set({282, rational, 1, tiff.put(u32({300, 2}))});
    tiff.set({283, rational, 1, tiff.put(u32({4294967295, 1}))}).set(65000, 7);
    const MemoryFile file(tiff.bytes());
    for (const auto reader : {kestu_img_read_tiff, kestu_img_read, kestu_img_read_tiff_info}) {
        Image img;
        ASSERT_OK(reader(file.path(), &img));
        EXPECT_THAT(img.pixels(), reader == kestu_img_read_tiff_info
                                      ? std::vector<int>()
                                      : std::vector<int>({'a', 'b', 'c', 'd', 'e', 'f'}));
        EXPECT_EQ(img.data16, nullptr);
        EXPECT_THAT((std::vector{img.type, img.height, img.width, img.samples, img.photometric,
                                 img.compression, img.planar, img.resunit}),
                    ElementsAre(1, 2, 3, 1, 1, 5, 2, 2));
        EXPECT_THAT(img.bits, ElementsAre(8, 8, 8));
        EXPECT_EQ(img.xres, 150.0);
        EXPECT_EQ(img.yres, 4294967295.0);
        EXPECT_STREQ(img.software, "test");
        ASSERT_EQ(img.n_strip_offsets, 1);
        ASSERT_EQ(img.n_strip_bytes, 1);
        EXPECT_EQ(img.strip_offsets[0], 8u);
        EXPECT_EQ(img.strip_bytes[0], 6u);
        kestu_img_free(&img);
        EXPECT_FALSE(img.holds_arrays());
        EXPECT_EQ(img.width, 3);
    }
}

TEST(TiffRead, WhatTheFileDoesNotSayHasDefaults) {
    const MemoryFile file(tiff_header(8) + tiff_directory({}));
    Image img;
    std::fill_n(reinterpret_cast<char *>(&img), sizeof(kestu_img_t), '\xff');
    ASSERT_OK(kestu_img_read_tiff_info(file.path(), &img));
    EXPECT_FALSE(img.holds_arrays());
    EXPECT_EQ(img.photometric, -1);
    EXPECT_EQ(img.resunit, -1);
    EXPECT_EQ(img.xres, 0.0);
    EXPECT_EQ(img.width + img.height + img.samples + img.bits[2] + img.n_strip_bytes, 0);
}

TEST(TiffRead, ResolutionsBecomePixelsPerInch) {
    const struct {
        uint32_t unit;
        double xres, xmm;
    } cases[] = {{3, 254.0, 10.0}, {2, 100.0, 100 / 25.4}, {0, 100.0, 100 / 25.4}};
    for (const auto &c : cases) {
        Tiff tiff = Tiff::tiny();
        tiff.set({282, rational, 1, tiff.put(u32({100, 1}))});
        tiff.set({283, rational, 1, tiff.put(u32({50, 1}))});
        if (c.unit)
            tiff.set({296, shorts, 1, c.unit});
        Image img;
        ASSERT_OK(read(tiff.bytes(), img));
        EXPECT_EQ(img.xres, c.xres);
        EXPECT_EQ(img.yres, c.xres / 2);
        double xmm = 0;
        double ymm = 0;
        EXPECT_EQ(kestu_img_get_resmm(&img, &xmm, &ymm), nullptr);
        EXPECT_EQ(xmm, c.xmm);
        EXPECT_EQ(ymm, c.xmm / 2);
    }
}

TEST(TiffRead, BitsPerSampleStandInTheEntryOrBehindIt) {
    const std::string depths = u16({16, 33, 65535});
    const struct {
        uint32_t count;
        bool inside;
        std::vector<int> bits;
    } cases[] = {{1, true, {16, 16, 16}},
                 {9, true, {16, 16, 16}},
                 {1, false, {16, 0, 0}},
                 {2, false, {16, 33, 0}},
                 {3, false, {16, 33, 65535}}};
    for (const auto &c : cases) {
        Tiff tiff = Tiff::gray(1, 1, 16, std::string(40, '\0') + u16({513}));
        tiff.set(273, 48).set(279, 2);
        tiff.set({258, shorts, c.count, c.inside ? 16 : tiff.put(depths)});
        Image img;
        ASSERT_OK(read(tiff.bytes(), img));
        EXPECT_THAT(img.bits, testing::ElementsAreArray(c.bits));
        EXPECT_THAT(img.pixels(), ElementsAre(513));
    }
}

TEST(TiffRead, OtherDepthsGiveNoPixelsAndLeaveStripsAlone) {
    for (const uint32_t bits : {1, 4, 12, 32}) {
        Image img;
        ASSERT_OK(read(Tiff::gray(4, 4, bits, "").set(279, 1 << 30).bytes(), img));
        EXPECT_EQ(img.type, 1);
        EXPECT_EQ(img.data8, nullptr);
        EXPECT_EQ(img.data16, nullptr);
    }
}

TEST(TiffRead, StripsEndAnywhere) {
    const std::string six = u16({1, 2, 3, 4, 5, 6});
    const struct {
        const char *what;
        uint32_t width, height, bits;
        std::string data;
        std::vector<std::pair<unsigned, unsigned>> strips; // place in the data, bytes
        std::vector<int> pixels;
    } cases[] = {
        {"inside rows", 3, 2, 16, six, {{0, 4}, {4, 4}, {8, 4}}, {1, 2, 3, 4, 5, 6}},
        {"in any order", 3, 2, 16, six, {{8, 4}, {4, 4}, {0, 4}}, {5, 6, 3, 4, 1, 2}},
        {"over each other", 3, 1, 16, six, {{0, 4}, {0, 4}}, {1, 2, 1}},
        {"odd bytes", 3, 1, 16, "a\0xb\0c\0y"s, {{0, 3}, {3, 2}, {5, 3}}, {'a', 'b', 'c'}},
        {"one byte", 2, 1, 16, "xa\0b\0"s, {{0, 1}, {1, 0}, {1, 4}}, {'a', 'b'}},
        {"too few", 2, 2, 8, "abc", {{0, 2}, {2, 1}}, {'a', 'b', 'c', 0}},
        {"none", 2, 1, 8, "", {}, {0, 0}},
        {"too many", 2, 1, 8, "abcdef", {{0, 4}, {4, 2}}, {'a', 'b'}},
        {"too many, apart", 2, 1, 8, "abcdef", {{4, 1}, {1, 3}, {0, 6}}, {'e', 'b'}},
        {"many rows a strip", 1, 6, 8, "abcdef", {{0, 5}, {5, 1}}, {'a', 'b', 'c', 'd', 'e', 'f'}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        Tiff tiff = Tiff::gray(c.width, c.height, c.bits, c.data);
        std::string offsets;
        std::string bytes;
        for (const auto &[place, size] : c.strips) {
            offsets += u32({8 + place});
            bytes += u16({size});
        }
        const auto count = static_cast<uint32_t>(c.strips.size());
        tiff.set({273, longs, count, tiff.put(offsets)});
        tiff.set({279, shorts, count, tiff.put(bytes)});
        EXPECT_EQ(pixels_of(tiff.bytes()), c.pixels);
    }
}

// More rows and more runs of strips than one system call takes.
TEST(TiffRead, ManyStripsAndRows) {
    std::string samples;
    for (int i = 0; i < 5000; ++i)
        samples += static_cast<char>(i * 7 % 251);
    std::vector<int> expected(samples.begin(), samples.end());
    std::transform(expected.begin(), expected.end(), expected.begin(),
                   [](int sample) { return sample & 255; });
    for (const auto &[width, strip] : {std::pair{1u, 5000u}, {2u, 1u}, {5u, 7u}, {2500u, 999u}}) {
        Tiff tiff = Tiff::gray(width, 5000 / width, 8, samples);
        std::string offsets;
        std::string bytes;
        for (unsigned at = 0; at < 5000; at += strip) {
            offsets += u16({8 + at});
            bytes += u32({std::min(strip, 5000 - at)});
        }
        const auto count = static_cast<uint32_t>(bytes.size() / 4);
        if (count > 1) {
            tiff.set({273, shorts, count, tiff.put(offsets)});
            tiff.set({279, longs, count, tiff.put(bytes)});
        }
        EXPECT_EQ(pixels_of(tiff.bytes()), expected) << width << " by strips of " << strip;
    }
}

TEST(TiffRead, LaterDirectoriesReplaceTags) {
    const std::string list = u32({8, 10});
    const std::string first = tiff_directory({{256, longs, 1, 9},
                                              {257, longs, 1, 1},
                                              {305, ascii, 3, 8},
                                              {258, shorts, 1, 8},
                                              {262, longs, 1, 1},
                                              {273, longs, 2, 24},
                                              {279, longs, 2, 24},
                                              {279, longs, 1, 5},
                                              {296, longs, 1, 77}},
                                             200);
    std::string bytes = tiff_header(40) + "one\0two\0abcdefgh"s + list + list + first;
    bytes.resize(200);
    bytes += tiff_directory({{256, longs, 1, 4},
                             {305, ascii, 3, 12},
                             {273, longs, 1, 16},
                             {279, longs, 1, 4},
                             {296, longs, 1, 2}});
    const long blocks = live_blocks();
    {
        Image img;
        ASSERT_OK(read(bytes, img));
        EXPECT_THAT(img.pixels(), ElementsAre('a', 'b', 'c', 'd'));
        EXPECT_STREQ(img.software, "two");
        EXPECT_EQ(img.n_strip_bytes, 1);
    }
    EXPECT_EQ(live_blocks(), blocks);
}

TEST(TiffRead, ANegativeNumberOfEntriesIsNone) {
    std::string bytes = tiff_header(8) + u16({0xffff}) + u32({14}) + tiff_directory({});
    Image img;
    const MemoryFile file(bytes);
    EXPECT_OK(kestu_img_read_tiff_info(file.path(), &img));
}

TEST(TiffRead, AnEmptySoftwareTextIsAText) {
    Image img;
    ASSERT_OK(read(Tiff::tiny().set({305, ascii, 0, 4000000000u}).bytes(), img));
    EXPECT_STREQ(img.software, "");
}

TEST(TiffRead, FilesLargerThanOffsetsReachAreRead) {
    MemoryFile file(tiff_header(0xfffffff0));
    file.write_at(0xffffff00, "abcd");
    file.write_at(0xffffff10, u32({0xffffff00, 0xffffff02}));
    file.write_at(0xfffffff0, tiff_directory({{256, longs, 1, 2},
                                              {257, longs, 1, 2},
                                              {258, shorts, 1, 8},
                                              {262, longs, 1, 0},
                                              {273, longs, 2, 0xffffff10},
                                              {279, shorts, 2, 100}}));
    file.write_at(100, u16({2, 2}));
    file.resize(5ull << 30);
    Image img;
    ASSERT_OK(kestu_img_read_tiff(file.path(), &img));
    EXPECT_THAT(img.pixels(), ElementsAre('a', 'b', 'c', 'd'));
}

TEST(TiffRead, TheDispatcherWrapsAndForgetsWhatIsNotTiff) {
    Image img;
    const MemoryFile text("This is a text.");
    EXPECT_CHAIN(kestu_img_read(text.path(), &img), Element(120154, ""));
    EXPECT_CHAIN(kestu_img_read("/nowhere", &img), Element(120030, "Cannot read image."),
                 Element(120030, reading_info), Element(120030, "Cannot open file '/nowhere'"));
    const MemoryFile short_file("II*");
    EXPECT_CHAIN(kestu_img_read(short_file.path(), &img), Element(120031, "Cannot read image."),
                 Element(120031, reading_info), Element(120031, ""));
    const MemoryFile silent(Tiff::tiny().drop(262).bytes());
    EXPECT_CHAIN(kestu_img_read(silent.path(), &img), Element(120152, "Cannot read image."),
                 Element(120152, reading), Element(120152, "Unknown photometric interpretation"));
    EXPECT_FALSE(img.holds_arrays());
}
