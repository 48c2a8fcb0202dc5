// TIFF files that other programs' libraries write: libtiff, and the encoder of libavcodec, which
// shares no code with it.
#include "kestu_img.h"

#include "support/chain.hpp"
#include "tiff_bytes.hpp"

#include <tiffio.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <memory>

using namespace kestu::test;

namespace {

constexpr int width = 61;
constexpr int height = 47;

int sample(int row, int column, int bits) {
    return (row * 1031 + column * 257 + row * column) & ((1 << bits) - 1);
}

// A row of samples as they stand in memory.
std::string row_bytes(int row, int bits) {
    std::string bytes;
    for (int column = 0; column < width; ++column)
        for (int shift = 0; shift < bits; shift += 8)
            bytes += static_cast<char>(sample(row, column, bits) >> shift);
    return bytes;
}

void expect_pixels(const kestu_img_t &img, int bits) {
    ASSERT_EQ(img.width, width);
    ASSERT_EQ(img.height, height);
    ASSERT_EQ(img.bits[0], bits);
    ASSERT_NE(bits == 8 ? static_cast<const void *>(img.data8) : img.data16, nullptr);
    for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
            ASSERT_EQ(bits == 8 ? img.data8[r][c] : img.data16[r][c], sample(r, c, bits))
                << r << ", " << c;
}

struct Layout {
    uint32_t rows_per_strip;
    uint16_t bits, photometric, unit;
};

void write_directory(TIFF *tiff, const Layout &layout) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, layout.rows_per_strip);
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, "a test of readers");
    if (layout.unit) {
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, layout.unit);
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 300.0);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 150.5);
    }
    for (int r = 0; r < height; ++r) {
        std::string row = row_bytes(r, layout.bits);
        ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(r)), 1);
    }
}

// Strips of one row to all rows. Two strips are left out: libtiff keeps their sizes in the entry.
std::vector<Layout> layouts() {
    std::vector<Layout> all;
    for (const uint32_t rows : {1, 2, 7, 16, height})
        for (const uint16_t bits : {8, 16})
            for (const uint16_t unit : {0, 2, 3})
                all.push_back({rows, bits, static_cast<uint16_t>(rows % 2), unit});
    return all;
}

// One frame as libavcodec writes it, or nothing.
std::string encode(int bits) {
    const AVCodec *codec = avcodec_find_encoder(AV_CODEC_ID_TIFF);
    AVCodecContext *context = avcodec_alloc_context3(codec);
    context->width = width;
    context->height = height;
    context->time_base = {1, 1};
    context->pix_fmt = bits == 8 ? AV_PIX_FMT_GRAY8 : AV_PIX_FMT_GRAY16LE;
    av_opt_set(context->priv_data, "compression_algo", "raw", 0);
    AVFrame *frame = av_frame_alloc();
    frame->width = width;
    frame->height = height;
    frame->format = context->pix_fmt;
    AVPacket *packet = av_packet_alloc();
    std::string file;
    if (avcodec_open2(context, codec, nullptr) == 0 && av_frame_get_buffer(frame, 0) == 0) {
        for (int r = 0; r < height; ++r)
            row_bytes(r, bits).copy(
                reinterpret_cast<char *>(frame->data[0] + r * frame->linesize[0]),
                static_cast<size_t>(frame->linesize[0]));
        if (avcodec_send_frame(context, frame) == 0 && avcodec_receive_packet(context, packet) == 0)
            file.assign(reinterpret_cast<char *>(packet->data), static_cast<size_t>(packet->size));
    }
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return file;
}

} // namespace

TEST(ForeignTiff, FilesOfLibtiffAreRead) {
    for (const Layout &layout : layouts()) {
        SCOPED_TRACE(testing::Message() << layout.rows_per_strip << " rows a strip, " << layout.bits
                                        << " bits, unit " << layout.unit);
        const MemoryFile file;
        TIFF *tiff = TIFFOpen(file.path(), "wl");
        ASSERT_NE(tiff, nullptr);
        write_directory(tiff, layout);
        TIFFClose(tiff);
        Image img;
        ASSERT_OK(kestu_img_read(file.path(), &img));
        expect_pixels(img, layout.bits);
        EXPECT_EQ(img.photometric, layout.photometric);
        EXPECT_STREQ(img.software, "a test of readers");
        const double scale = layout.unit == 0 ? 0.0 : layout.unit == 3 ? 2.54 : 1.0;
        EXPECT_EQ(img.xres, 300.0 * scale);
        EXPECT_EQ(img.yres, 150.5 * scale);
    }
}

TEST(ForeignTiff, TheLastOfSeveralDirectoriesHolds) {
    const MemoryFile file;
    TIFF *tiff = TIFFOpen(file.path(), "wl");
    ASSERT_NE(tiff, nullptr);
    for (const Layout &layout : {Layout{3, 8, 0, 2}, Layout{1, 8, 0, 2}, Layout{5, 16, 1, 2}}) {
        write_directory(tiff, layout);
        ASSERT_EQ(TIFFWriteDirectory(tiff), 1);
    }
    TIFFClose(tiff);
    Image img;
    ASSERT_OK(kestu_img_read(file.path(), &img));
    expect_pixels(img, 16);
    EXPECT_EQ(img.photometric, 1);
    EXPECT_EQ(img.n_strip_bytes, 10);
}

TEST(ForeignTiff, FilesOfLibavcodecAreRead) {
    av_log_set_level(AV_LOG_QUIET);
    for (const int bits : {8, 16}) {
        const MemoryFile file(encode(bits));
        Image img;
        ASSERT_OK(kestu_img_read(file.path(), &img));
        expect_pixels(img, bits);
        EXPECT_EQ(img.photometric, 1);
        EXPECT_EQ(img.xres, 72.0);
    }
}
