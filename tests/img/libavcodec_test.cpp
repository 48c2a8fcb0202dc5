// Files exchanged with libavcodec, in both directions: it shares no code with libtiff.
#include "kestu_img.h"

#include "picture.hpp"
#include "support/chain.hpp"
#include "tiff_bytes.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <cstring>

using namespace kestu::test;

namespace {

// One use of the codec: a frame that becomes a packet, or the other way round.
class Codec {
  public:
    explicit Codec(const AVCodec *codec) : context(avcodec_alloc_context3(codec)) {
        av_log_set_level(AV_LOG_QUIET);
    }
    ~Codec() {
        av_packet_free(&packet);
        av_frame_free(&frame);
        avcodec_free_context(&context);
    }
    Codec(const Codec &) = delete;
    Codec &operator=(const Codec &) = delete;

    AVCodecContext *context;
    AVPacket *packet = av_packet_alloc();
    AVFrame *frame = av_frame_alloc();
};

template <typename Sample>
constexpr AVPixelFormat format = sizeof(Sample) == 1 ? AV_PIX_FMT_GRAY8 : AV_PIX_FMT_GRAY16LE;

template <typename Sample>
std::string encoded(const Picture<Sample> &picture) {
    Codec codec(avcodec_find_encoder(AV_CODEC_ID_TIFF));
    codec.context->width = codec.frame->width = picture.img.width;
    codec.context->height = codec.frame->height = picture.img.height;
    codec.context->pix_fmt = format<Sample>;
    codec.frame->format = format<Sample>;
    codec.context->time_base = {1, 1};
    av_opt_set(codec.context->priv_data, "compression_algo", "raw", 0);
    EXPECT_EQ(avcodec_open2(codec.context, nullptr, nullptr), 0);
    EXPECT_EQ(av_frame_get_buffer(codec.frame, 0), 0);
    for (int r = 0; r < picture.img.height; ++r)
        std::memcpy(codec.frame->data[0] + r * codec.frame->linesize[0],
                    picture.rows[static_cast<size_t>(r)],
                    static_cast<size_t>(picture.img.width) * sizeof(Sample));
    EXPECT_EQ(avcodec_send_frame(codec.context, codec.frame), 0);
    EXPECT_EQ(avcodec_receive_packet(codec.context, codec.packet), 0);
    return {reinterpret_cast<char *>(codec.packet->data), static_cast<size_t>(codec.packet->size)};
}

template <typename Sample>
std::vector<int> decoded(std::string bytes) {
    Codec codec(avcodec_find_decoder(AV_CODEC_ID_TIFF));
    codec.packet->size = static_cast<int>(bytes.size());
    bytes.resize(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    codec.packet->data = reinterpret_cast<uint8_t *>(bytes.data());
    EXPECT_EQ(avcodec_open2(codec.context, nullptr, nullptr), 0);
    EXPECT_EQ(avcodec_send_packet(codec.context, codec.packet), 0);
    EXPECT_EQ(avcodec_receive_frame(codec.context, codec.frame), 0);
    EXPECT_EQ(codec.frame->format, format<Sample>);
    std::vector<int> pixels;
    for (int r = 0; r < codec.frame->height; ++r) {
        const auto *row =
            reinterpret_cast<Sample *>(codec.frame->data[0] + r * codec.frame->linesize[0]);
        pixels.insert(pixels.end(), row, row + codec.frame->width);
    }
    return pixels;
}

} // namespace

template <typename Sample>
class AvcodecExchange : public testing::Test {};
using Depths = testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(AvcodecExchange, Depths, );

TYPED_TEST(AvcodecExchange, ItsFilesAreRead) {
    const Picture<TypeParam> picture(47, 61);
    const MemoryFile file(encoded(picture));
    Image img;
    ASSERT_OK(kestu_img_read(file.path(), &img));
    EXPECT_EQ(img.width, 61);
    EXPECT_EQ(img.bits[0], picture.img.bits[0]);
    EXPECT_EQ(img.pixels(), picture.pixels());
    EXPECT_EQ(img.photometric, 1);
    EXPECT_EQ(img.xres, 72.0);
}

TYPED_TEST(AvcodecExchange, ItReadsWhatIsWritten) {
    for (const auto &[height, width] : {std::pair{1, 1}, {61, 47}, {600, 3}, {2, 700}}) {
        const Picture<TypeParam> picture(static_cast<size_t>(height), static_cast<size_t>(width));
        const MemoryFile file;
        ASSERT_OK(kestu_img_write_tiff(file.path(), &picture.img));
        EXPECT_EQ(decoded<TypeParam>(file.bytes()), picture.pixels()) << height << ", " << width;
    }
}
