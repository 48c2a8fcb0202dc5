// Writing TIFF: the bytes, and what happens when they cannot be written.
#include "picture.hpp"
#include "support/test.hpp"
#include "tiff_bytes.hpp"

#include <thread>

using namespace kestu::test;

namespace {

constexpr const char *writing = "Cannot write TIFF image.";
constexpr const char *converting = "Cannot convert double array to TIFF image.";

const std::string software = "KESTU "s + kestu_version_string();

std::string written(const kestu_img_t &img) {
    const MemoryFile file(std::string(1000, 'x')); // what was there before
    EXPECT_OK(kestu_img_write_tiff(file.path(), &img));
    return file.bytes();
}

// What stands before the pixels.
std::string head(uint32_t width, uint32_t height, uint32_t bits, uint32_t photometric,
                 uint32_t samples, uint32_t strip_bytes) {
    const auto size = static_cast<uint32_t>(software.size() + 1);
    return tiff_header(8) +
           tiff_directory({{256, longs, 1, width},
                           {257, longs, 1, height},
                           {258, shorts, 1, bits},
                           {259, shorts, 1, 1},
                           {262, shorts, 1, photometric},
                           {273, longs, 1, 134 + size},
                           {277, shorts, 1, samples},
                           {279, longs, 1, strip_bytes},
                           {284, shorts, 1, 1},
                           {305, ascii, size, 134}}) +
           software + '\0';
}

kestu_error_t *convert(const char *path, std::vector<std::vector<double>> values) {
    std::vector<double *> rows;
    for (auto &row : values)
        rows.push_back(row.data());
    const auto columns = values.empty() ? 2 : static_cast<int>(values[0].size());
    return kestu_img_darr_to_tiff(path, rows.data(), static_cast<int>(rows.size()), columns);
}

// The samples that a matrix of doubles becomes.
std::vector<int> converted(const std::vector<std::vector<double>> &values) {
    const MemoryFile file;
    EXPECT_OK(convert(file.path(), values));
    Image img;
    EXPECT_OK(kestu_img_read(file.path(), &img));
    EXPECT_EQ(img.photometric, 0);
    return img.pixels();
}

} // namespace

TEST(TiffWrite, BytesAreFixed) {
    const Picture<uint8_t> bytes({{1, 2}, {3, 4}, {5, 254}});
    EXPECT_EQ(written(bytes.img), head(2, 3, 8, 1, 1, 6) + "\1\2\3\4\5\xfe");
    Picture<uint16_t> words({{0x1234, 0xfffe}});
    words.img.photometric = 0;
    words.img.samples = 70000;
    EXPECT_EQ(written(words.img), head(2, 1, 16, 0, 70000 & 0xffff, 4) + "\x34\x12\xfe\xff");
}

TEST(TiffWrite, OtherDepthsHaveNoPixels) {
    kestu_img_t img = {};
    img.width = -1;
    img.height = 3;
    img.photometric = -1;
    img.samples = 3;
    img.bits[0] = 12;
    EXPECT_EQ(written(img), head(0xffffffff, 3, 12, 0xffff, 3, 3));
    img.bits[0] = 8;
    EXPECT_EQ(written(img), head(0xffffffff, 3, 8, 0xffff, 3, 0));
}

// A pipe takes as much as it has room for.
TEST(TiffWrite, RowsMayBeTakenInPieces) {
    const Picture<uint16_t> picture(300, 333);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string received;
    std::thread reader([&] {
        char piece[1001];
        for (ssize_t got; (got = read(ends[0], piece, sizeof piece)) > 0;)
            received.append(piece, static_cast<size_t>(got));
    });
    const std::string path = "/proc/self/fd/" + std::to_string(ends[1]);
    EXPECT_OK(kestu_img_write_tiff(path.c_str(), &picture.img));
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_EQ(received, written(picture.img));
}

TEST(TiffWrite, FilesThatCannotBeWrittenAreErrors) {
    const Picture<uint8_t> picture(4, 4);
    const auto expect_errors = [](const char *action, auto write) {
        for (const char *path : {"/nowhere/a.tif", "/"})
            EXPECT_CHAIN(write(path), 120030, action, "Cannot open file '"s + path + "'");
        EXPECT_CHAIN(write("/dev/full"), 120032, action, "");
    };
    expect_errors(writing, [&](auto path) { return kestu_img_write_tiff(path, &picture.img); });
    expect_errors(converting, [](auto path) { return convert(path, {{1, 2}}); });
}

TEST(TiffWrite, ImagesThatFitIntoNoFileAreErrors) {
    const MemoryFile file;
    kestu_img_t img = {};
    img.bits[0] = 8;
    img.height = img.width = 65536;
    EXPECT_CHAIN(kestu_img_write_tiff(file.path(), &img), 120152, writing,
                 "An image of 65536 x 65536 pixels is too large for TIFF.");
    img.height = 1;
    EXPECT_CHAIN(kestu_img_write_tiff(file.path(), &img), 120152, writing,
                 "The image has no pixels.");
}

TEST(DoublesToTiff, ValuesAreScaledToTheWholeRangeAndWhatHasNoIntegerIsDefined) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<std::vector<double>, std::vector<int>> cases[] = {
        {{-1, 0, 1, 0.5}, {0, 32767, 65535, 49151}},
        {{-7, -5}, {0, 65535}},
        {{7, 7, 7}, {0, 0, 0}},
        {{-5e299, 5e299}, {0, 65535}},
        {{nan, 1, 2, nan}, {0, 0, 65535, 0}},
        {{nan, nan}, {0, 0}},
        {{1, 2, inf}, {0, 0, 65535}},
        {{-inf, 2, 5}, {0, 0, 65535}},
        {{1e305, 1e307}, {65535, 65535}},
        {{1e302, 1e302}, {65535, 65535}}};
    for (const auto &[values, samples] : cases)
        EXPECT_EQ(converted({values}), samples);
    EXPECT_EQ(converted({{-1, 0}, {1, 0.5}}), cases[0].second);
    for (int i = 1; i < 200; ++i)
        EXPECT_EQ(converted({{0.1, 0.1 + i / 7.0}})[1], 65535) << i;
}

TEST(DoublesToTiff, WhatCannotBeAllocatedIsAnError) {
    const MemoryFile file;
    EXPECT_CHAIN(convert(file.path(), {}), 120014, converting, "Cannot allocate matrix.",
                 "Cannot allocate memory of size 0 bytes.");
    double row[2] = {1, 2};
    double *rows[] = {row, row};
    const long blocks = live_blocks();
    const size_t failures = fail_each_allocation([&](size_t) {
        kestu_error_t *err = kestu_img_darr_to_tiff(file.path(), rows, 2, 2);
        const int code = err ? err->code : 120012;
        kestu_error_clear(err);
        EXPECT_TRUE(code == 120012 || code == 120030);
    });
    EXPECT_EQ(failures, 4u);
    EXPECT_EQ(live_blocks(), blocks);
}
