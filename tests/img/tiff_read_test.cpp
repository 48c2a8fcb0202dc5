// Reading TIFF files made by hand: what is understood.
#include "read_bytes.hpp"
#include "support/test.hpp"

using namespace kestu::test;

TEST(TiffRead, FillsTheRecord) {
    Tiff tiff(3, 2, 8, "abcdef");
    tiff.set(259, 5).set(284, 2).set(296, 2).set({305, ascii, 4, tiff.put("test!")});
    tiff.set_ratio(282, 300, 2).set_ratio(283, 4294967295, 1).set(65000, 7);
    const MemoryFile file(tiff.bytes());
    const auto expect_filled = [&](auto reader, const std::string &pixels) {
        Image img;
        ASSERT_OK(reader(file.path(), &img));
        EXPECT_THAT(img.pixels(), ElementsAreArray(pixels));
        EXPECT_EQ(img.data16, nullptr);
        EXPECT_THAT((std::vector{img.type, img.height, img.width, img.samples, img.photometric,
                                 img.compression, img.planar, img.resunit}),
                    ElementsAre(1, 2, 3, 1, 1, 5, 2, 2));
        EXPECT_THAT(img.bits, ElementsAre(8, 8, 8));
        EXPECT_THAT((std::vector{img.xres, img.yres}), ElementsAre(150.0, 4294967295.0));
        double xmm = 0, ymm = 0;
        EXPECT_EQ(kestu_img_get_resmm(&img, &xmm, &ymm), nullptr);
        EXPECT_THAT((std::vector{xmm, ymm}), ElementsAre(150 / 25.4, 4294967295.0 / 25.4));
        EXPECT_STREQ(img.software, "test");
        ASSERT_THAT((std::vector{img.n_strip_offsets, img.n_strip_bytes}), ElementsAre(1, 1));
        EXPECT_EQ(img.strip_offsets[0], 8u);
        EXPECT_EQ(img.strip_bytes[0], 6u);
        kestu_img_free(&img);
        EXPECT_FALSE(img.holds_arrays());
        EXPECT_EQ(img.width, 3);
    };
    expect_filled(kestu_img_read_tiff, "abcdef");
    expect_filled(kestu_img_read, "abcdef");
    expect_filled(kestu_img_read_tiff_info, "");
}

TEST(TiffRead, WhatTheFileDoesNotSayHasDefaults) {
    Image img;
    std::fill_n(reinterpret_cast<char *>(&img), sizeof(kestu_img_t), '\xff');
    ASSERT_OK(read_bytes(tiff_header(8) + tiff_directory({}), img, kestu::read_tiff_info));
    EXPECT_FALSE(img.holds_arrays());
    EXPECT_THAT((std::vector{img.photometric, img.resunit, img.width, img.height, img.samples,
                             img.bits[2], img.n_strip_bytes}),
                ElementsAre(-1, -1, 0, 0, 0, 0, 0));
    EXPECT_EQ(img.xres, 0.0);
}

TEST(TiffRead, BitsPerSampleStandInTheEntryOrBehindItAndOnly8And16GivePixels) {
    const struct {
        uint32_t count;
        bool inside;
        std::vector<int> bits;
    } cases[] = {{1, true, {32, 32, 32}},
                 {9, true, {32, 32, 32}},
                 {1, false, {16, 0, 0}},
                 {2, false, {16, 33, 0}},
                 {3, false, {16, 33, 65535}}};
    for (const auto &c : cases) {
        Tiff tiff(1, 1, 16, u16({513}) + std::string(24, '\0'));
        const uint32_t behind = tiff.put(u16({16, 33, 65535}));
        ASSERT_GT(behind, 32u);
        tiff.set({258, shorts, c.count, c.inside ? 32 : behind});
        Image img;
        ASSERT_OK(read_bytes(tiff.bytes(), img));
        EXPECT_THAT(img.bits, ElementsAreArray(c.bits));
        EXPECT_EQ(img.pixels(), c.inside ? std::vector<int>() : std::vector{513});
    }
    for (const uint32_t bits : {1, 12}) // of other depths not even the strips are looked at
        EXPECT_EQ(pixels_of(Tiff(4, 4, bits, "").set(279, 1 << 30).bytes()), std::vector<int>());
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
    for (const auto &c : cases)
        for (const uint16_t type : {shorts, longs}) {
            Tiff tiff(c.width, c.height, c.bits, c.data);
            EXPECT_EQ(pixels_of(tiff.set_strips(c.strips, type).bytes()), c.pixels) << c.what;
        }
}

// More rows and more runs of strips than one system call takes.
TEST(TiffRead, ManyStripsAndRows) {
    std::string samples;
    std::vector<int> expected;
    for (int i = 0; i < 5000; ++i) {
        expected.push_back(i * 7 % 251);
        samples += static_cast<char>(expected.back());
    }
    for (const auto &[width, strip] : {std::pair{1u, 5000u}, {2u, 1u}, {5u, 7u}, {2500u, 999u}}) {
        std::vector<std::pair<unsigned, unsigned>> strips;
        for (unsigned at = 0; at < 5000; at += strip)
            strips.emplace_back(at, std::min(strip, 5000 - at));
        Tiff tiff(width, 5000 / width, 8, samples);
        EXPECT_EQ(pixels_of(tiff.set_strips(strips, shorts).bytes()), expected)
            << width << " by strips of " << strip;
    }
}

TEST(TiffRead, LaterDirectoriesReplaceTagsAndLeaveNothingBehind) {
    Tiff tiff(9, 1, 8, "abcdefgh");
    tiff.set({305, ascii, 3, tiff.put("one")}).set(296, 77).set_strips({{0, 1}, {3, 2}}, longs);
    const uint32_t two = tiff.put("two");
    std::string bytes = tiff.bytes();
    bytes.replace(bytes.size() - 4, 4, u32({static_cast<unsigned>(bytes.size())}));
    bytes += tiff_directory({{256, longs, 1, 4},
                             {305, ascii, 3, two},
                             {273, longs, 1, 9},
                             {279, longs, 2, 0},
                             {279, longs, 1, 4},
                             {296, longs, 1, 2}});
    const long blocks = live_blocks();
    Image img;
    ASSERT_OK(read_bytes(bytes, img));
    EXPECT_EQ(img.pixels(), (std::vector<int>{'b', 'c', 'd', 'e'}));
    EXPECT_STREQ(img.software, "two");
    EXPECT_EQ(img.n_strip_bytes, 1);
    kestu_img_free(&img);
    EXPECT_EQ(live_blocks(), blocks);
}

TEST(TiffRead, OddFilesAreReadAsTheyAlwaysWere) {
    std::string fourth_byte = Tiff().bytes();
    fourth_byte[3] = 7;
    EXPECT_EQ(pixels_of(fourth_byte), (std::vector{1, 2, 3, 4}));
    const std::string negative = tiff_header(8) + u16({0xffff}) + u32({14}) + tiff_directory({});
    Image img;
    EXPECT_OK(read_bytes(negative, img, kestu::read_tiff_info));
    ASSERT_OK(read_bytes(Tiff().set({305, ascii, 0, 4000000000u}).bytes(), img));
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
    file.write_at(5ull << 30, "end");
    Image img;
    ASSERT_OK(kestu_img_read_tiff(file.path(), &img));
    EXPECT_EQ(img.pixels(), (std::vector<int>{'a', 'b', 'c', 'd'}));
}
