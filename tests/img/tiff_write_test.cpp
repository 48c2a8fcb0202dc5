// Writing TIFF: the bytes, what others read from them, and what happens when they cannot be
// written.
#include "kestu_img.h"
#include "kestu_lib.h"

#include "picture.hpp"
#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "tiff_bytes.hpp"

#include <tiffio.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cmath>
#include <csignal>
#include <limits>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

using namespace kestu::test;
using namespace std::string_literals;

namespace {

constexpr const char *writing = "Cannot write TIFF image.";
constexpr const char *converting = "Cannot convert double array to TIFF image.";

std::string written(const kestu_img_t &img) {
    const MemoryFile file("what was there before");
    EXPECT_OK(kestu_img_write_tiff(file.path(), &img));
    return file.bytes();
}

// What stands before the pixels.
std::string head(uint32_t width, uint32_t height, uint32_t bits, uint32_t photometric,
                 uint32_t samples, uint32_t strip_bytes) {
    const std::string software = "KESTU "s + kestu_version_string() + '\0';
    const auto size = static_cast<uint32_t>(software.size());
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
           software;
}

std::vector<int> read_by_libtiff(const MemoryFile &file) {
    TIFF *tiff = TIFFOpen(file.path(), "r");
    if (!tiff)
        return {};
    uint32_t width = 0, height = 0;
    uint16_t bits = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    std::vector<int> pixels;
    std::vector<uint16_t> row(width);
    for (uint32_t r = 0; r < height && TIFFReadScanline(tiff, row.data(), r) == 1; ++r)
        for (uint32_t c = 0; c < width; ++c)
            pixels.push_back(bits == 16 ? row[c] : reinterpret_cast<uint8_t *>(row.data())[c]);
    TIFFClose(tiff);
    return pixels;
}

std::vector<int> read_by_libavcodec(std::string bytes) {
    av_log_set_level(AV_LOG_QUIET);
    AVCodecContext *context = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_TIFF));
    AVPacket *packet = av_packet_alloc();
    AVFrame *frame = av_frame_alloc();
    const auto size = static_cast<int>(bytes.size());
    bytes.resize(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    packet->data = reinterpret_cast<uint8_t *>(bytes.data());
    packet->size = size;
    std::vector<int> pixels;
    if (avcodec_open2(context, nullptr, nullptr) == 0 &&
        avcodec_send_packet(context, packet) == 0 && avcodec_receive_frame(context, frame) == 0) {
        const bool wide = frame->format == AV_PIX_FMT_GRAY16LE;
        for (int r = 0; r < frame->height; ++r)
            for (int c = 0; c < frame->width; ++c) {
                const uint8_t *row = frame->data[0] + r * frame->linesize[0];
                pixels.push_back(wide ? row[2 * c] | row[2 * c + 1] << 8 : row[c]);
            }
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
    return pixels;
}

template <typename Sample>
void expect_all_read_back(size_t height, size_t width) {
    Picture<Sample> picture(height, width);
    picture.fill();
    picture.img.xres = picture.img.yres = 300;
    const MemoryFile file;
    ASSERT_OK(kestu_img_write_tiff(file.path(), &picture.img));
    Image img;
    ASSERT_OK(kestu_img_read(file.path(), &img));
    EXPECT_EQ(img.pixels(), picture.pixels());
    EXPECT_EQ(img.samples, 1);
    EXPECT_EQ(img.photometric, 1);
    EXPECT_EQ(img.xres, 0.0);
    EXPECT_EQ(img.software, "KESTU "s + kestu_version_string());
    EXPECT_EQ(read_by_libtiff(file), picture.pixels());
    EXPECT_EQ(read_by_libavcodec(file.bytes()), picture.pixels());
}

// The samples that a matrix of doubles becomes.
std::vector<int> converted(std::vector<std::vector<double>> values) {
    std::vector<double *> rows;
    for (auto &row : values)
        rows.push_back(row.data());
    const MemoryFile file;
    EXPECT_OK(kestu_img_darr_to_tiff(file.path(), rows.data(), static_cast<int>(values.size()),
                                     static_cast<int>(values[0].size())));
    Image img;
    EXPECT_OK(kestu_img_read(file.path(), &img));
    EXPECT_EQ(img.photometric, 0);
    return img.pixels();
}

} // namespace

TEST(TiffWrite, BytesAreFixed) {
    Picture<uint8_t> bytes(3, 2);
    bytes.fill();
    std::string pixels;
    for (const int sample : bytes.pixels())
        pixels += static_cast<char>(sample);
    EXPECT_EQ(written(bytes.img), head(2, 3, 8, 1, 1, 6) + pixels);
    Picture<uint16_t> words(1, 2);
    words.samples[0] = {0x1234, 0xfffe};
    words.rows[0] = words.samples[0].data();
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

// Some images have more rows than one system call takes.
TEST(TiffWrite, OthersReadWhatIsWritten) {
    expect_all_read_back<uint8_t>(1, 1);
    expect_all_read_back<uint8_t>(61, 47);
    expect_all_read_back<uint8_t>(600, 3);
    expect_all_read_back<uint16_t>(2, 700);
    expect_all_read_back<uint16_t>(601, 5);
}

// A pipe takes as much as it has room for.
TEST(TiffWrite, RowsMayBeTakenInPieces) {
    Picture<uint16_t> picture(300, 333);
    picture.fill();
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

TEST(TiffWrite, WhatCannotBeWrittenIsAnError) {
    Picture<uint8_t> picture(4, 4);
    for (const char *path : {"/nowhere/a.tif", "/"})
        EXPECT_CHAIN(kestu_img_write_tiff(path, &picture.img), Element(120030, writing),
                     Element(120030, "Cannot open file '"s + path + "'"));
    EXPECT_CHAIN(kestu_img_write_tiff("/dev/full", &picture.img), Element(120032, writing),
                 Element(120032, ""));
    const MemoryFile file;
    kestu_img_t img = {};
    img.bits[0] = 8;
    img.height = img.width = 65536;
    EXPECT_CHAIN(kestu_img_write_tiff(file.path(), &img), Element(120152, writing),
                 Element(120152, "An image of 65536 x 65536 pixels is too large for TIFF."));
    img.height = 1;
    EXPECT_CHAIN(kestu_img_write_tiff(file.path(), &img), Element(120152, writing),
                 Element(120152, "The image has no pixels."));
}

TEST(TiffWrite, AFileThatMayNotGrowIsLeftAsFarAsItGot) {
    Picture<uint8_t> picture(300, 300);
    picture.fill();
    const std::string whole = written(picture.img);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    for (const size_t size : {100, 146, 5000}) {
        const MemoryFile file;
        const rlimit limit = {size, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        kestu_error_t *err = kestu_img_write_tiff(file.path(), &picture.img);
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_CHAIN(err, Element(120032, writing), Element(120032, ""));
        EXPECT_EQ(file.bytes(), whole.substr(0, size));
    }
    std::signal(SIGXFSZ, handler);
}

TEST(DoublesToTiff, ValuesAreScaledToTheWholeRange) {
    EXPECT_EQ(converted({{-1, 0}, {1, 0.5}}), (std::vector{0, 32767, 65535, 49151}));
    EXPECT_EQ(converted({{7, 7, 7}}), (std::vector{0, 0, 0}));
    EXPECT_EQ(converted({{-5e299, 5e299}}), (std::vector{0, 65535}));
    std::vector<double> values;
    for (int i = 0; i < 1000; ++i)
        values.push_back(std::sin(i) * 1000 + 1e5);
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    std::vector<int> expected;
    for (const double x : values)
        expected.push_back(static_cast<uint16_t>(std::fabs((x - *low) * 65535.0 / (*high - *low))));
    EXPECT_EQ(converted({values}), expected);
}

TEST(DoublesToTiff, WhatHasNoIntegerIsDefined) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(converted({{nan, 1, 2, nan}}), (std::vector{0, 0, 65535, 0}));
    EXPECT_EQ(converted({{nan, nan}}), (std::vector{0, 0}));
    EXPECT_EQ(converted({{1, 2, inf}}), (std::vector{0, 0, 0}));
    EXPECT_EQ(converted({{-inf, 2, 5}}), (std::vector{0, 0, 0}));
    EXPECT_EQ(converted({{1e305, 1e307}}), (std::vector{65535, 65535}));
    EXPECT_EQ(converted({{1e302, 1e302}}), (std::vector{65535, 65535}));
}

TEST(DoublesToTiff, FailuresAreWrapped) {
    double row[2] = {1, 2};
    double *rows[] = {row, row};
    EXPECT_CHAIN(kestu_img_darr_to_tiff("/nowhere/a", rows, 2, 2), Element(120030, converting),
                 Element(120030, "Cannot open file '/nowhere/a'"));
    EXPECT_CHAIN(kestu_img_darr_to_tiff("/dev/full", rows, 2, 2), Element(120032, converting),
                 Element(120032, ""));
    const MemoryFile file;
    EXPECT_CHAIN(kestu_img_darr_to_tiff(file.path(), rows, 0, 2), Element(120014, converting),
                 Element(120014, "Cannot allocate matrix."),
                 Element(120014, "Cannot allocate memory of size 0 bytes."));
    EXPECT_CHAIN(kestu_img_darr_to_tiff(file.path(), rows, 2, 0), Element(120010, converting),
                 Element(120010, "Cannot allocate matrix."),
                 Element(120010, "Cannot allocate memory for 0 elements."));
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
