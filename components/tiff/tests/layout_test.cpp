// Every layout that libtiff writes, read by the wide reader.
#include "support/test.hpp"
#include "written.hpp"

using namespace kestu::test;

namespace {

// Where the pixel of the image stands in the file.
std::pair<uint32_t, uint32_t> place(const Layout &l, uint32_t row, uint32_t column) {
    const uint32_t bottom = l.height - 1;
    const uint32_t right = l.width - 1;
    const std::pair<uint32_t, uint32_t> places[] = {{row, column},
                                                    {row, right - column},
                                                    {bottom - row, right - column},
                                                    {bottom - row, column},
                                                    {column, row},
                                                    {bottom - column, row},
                                                    {bottom - column, right - row},
                                                    {column, right - row}};
    return places[l.orientation - 1];
}

std::vector<double> levels(const Layout &l) {
    std::vector<double> all;
    const bool turned = l.orientation > 4;
    for (uint32_t r = 0; r < (turned ? l.width : l.height); ++r)
        for (uint32_t c = 0; c < (turned ? l.height : l.width); ++c) {
            const auto [row, column] = place(l, r, c);
            all.push_back(level(l, row, column));
        }
    if (l.format != SAMPLEFORMAT_IEEEFP)
        return all;
    const auto [least, largest] = std::minmax_element(all.begin(), all.end());
    const double low = *least, range = *largest - *least;
    for (double &x : all)
        x = (x - low) / range * 65535;
    return all;
}

void expect_read(const Layout &l) {
    SCOPED_TRACE(testing::Message() << l);
    const MemoryFile file;
    ASSERT_TRUE(write_file(file.path(), {l}));
    Image img;
    kestu_tiff_info_t info;
    ASSERT_OK(kestu_tiff_read(file.path(), nullptr, &img, &info));
    const bool displayed = l.photometric == PHOTOMETRIC_SEPARATED;
    EXPECT_EQ(img.bits[0], l.bits <= 8 ? 8 : 16);
    EXPECT_EQ(img.photometric, l.photometric == PHOTOMETRIC_MINISWHITE ? 0 : 1);
    EXPECT_EQ(img.height, static_cast<int>(l.orientation > 4 ? l.width : l.height));
    EXPECT_EQ(info.bits, l.bits);
    EXPECT_EQ(info.compression, l.compression);
    EXPECT_EQ(info.ignored,
              displayed ? 0 : l.samples - (l.photometric == 2 || l.photometric == 6 ? 3 : 1));
    const std::vector<double> expected = levels(l);
    const std::vector<int> pixels = img.pixels();
    ASSERT_EQ(pixels.size(), expected.size());
    double furthest = 0;
    for (size_t i = 0; i < pixels.size(); ++i)
        furthest = std::max(furthest, std::fabs(pixels[i] - expected[i]));
    EXPECT_LE(furthest, l.spoils ? 9 : displayed ? 2 : 0.502);
    if (l.photometric <= 1 && l.format != SAMPLEFORMAT_IEEEFP && !l.spoils) {
        const auto [row, column] = place(l, 0, 0);
        EXPECT_NEAR(info.offset + info.factor * pixels[0], value(l, row, column, 0), info.factor);
    }
}

} // namespace

TEST(TiffLayouts, AllDepthsAndFormatsInStripsAndTilesOfBothOrders) {
    for (const char *mode : {"wl", "wb", "w8l", "w8b"})
        for (const uint32_t tile : {0, 16, 48})
            for (const uint16_t planar : {1, 2})
                for (const uint16_t samples : {1, 3, 4}) {
                    Layout l{.mode = mode,
                             .samples = samples,
                             .planar = planar,
                             .rows = tile ? tile : 7,
                             .tile = tile};
                    l.photometric = samples == 1 ? (tile ? 0 : 1) : PHOTOMETRIC_RGB;
                    for (const uint16_t bits : {1, 2, 3, 4, 6, 8, 10, 12, 14, 16, 20, 24, 31, 32}) {
                        l.bits = bits;
                        expect_read(l);
                    }
                    l.format = SAMPLEFORMAT_INT;
                    for (const uint16_t bits : {2, 8, 12, 16, 24, 32}) {
                        l.bits = bits;
                        expect_read(l);
                    }
                    l.format = SAMPLEFORMAT_IEEEFP;
                    for (const uint16_t bits : {16, 24, 32, 64}) {
                        l.bits = bits;
                        expect_read(l);
                    }
                    if (HasFailure())
                        return;
                }
}

TEST(TiffLayouts, AllCompressions) {
    const Layout bilevel{.bits = 1, .photometric = 0};
    const Layout bytes{.bits = 8}, words{.bits = 16}, colours{.samples = 3, .photometric = 2};
    const Layout floats{.bits = 32, .format = SAMPLEFORMAT_IEEEFP};
    const struct {
        uint16_t compression;
        std::vector<Layout> layouts;
        bool spoils = false;
    } cases[] = {
        {COMPRESSION_CCITTRLE, {bilevel}},
        {COMPRESSION_CCITTFAX3, {bilevel}},
        {COMPRESSION_CCITTFAX4, {bilevel}},
        {COMPRESSION_CCITTRLEW, {bilevel}},
        {COMPRESSION_JBIG, {bilevel}},
        {COMPRESSION_LZW, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_PACKBITS, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_DEFLATE, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_ADOBE_DEFLATE, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_LZMA, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_ZSTD, {bilevel, bytes, words, colours, floats}},
        {COMPRESSION_LERC, {bytes, words, colours, floats}},
        {COMPRESSION_WEBP, {colours}},
        {COMPRESSION_JPEG, {bytes, colours}, true},
    };
    for (const auto &[compression, layouts, spoils] : cases)
        for (Layout l : layouts)
            for (const uint32_t tile : {0, 32})
                for (const char *mode : {"wl", "wb"}) {
                    if (!TIFFIsCODECConfigured(compression))
                        continue;
                    l.mode = mode;
                    l.compression = compression;
                    l.spoils = spoils;
                    const bool whole = compression == COMPRESSION_JBIG;
                    l.tile = whole ? 0 : tile;
                    l.rows = whole ? l.height : tile ? 16 : 8;
                    l.predictor = 1;
                    expect_read(l);
                    const bool predicts = compression == COMPRESSION_LZW ||
                                          compression == COMPRESSION_ZSTD ||
                                          compression == COMPRESSION_ADOBE_DEFLATE;
                    const bool spoilt = l.format == SAMPLEFORMAT_IEEEFP && mode[1] == 'b';
                    if (predicts && l.bits >= 8 && !spoilt) { // by this libtiff as it writes
                        l.predictor = l.format == SAMPLEFORMAT_IEEEFP ? 3 : 2;
                        expect_read(l);
                    }
                }
}

TEST(TiffLayouts, ColoursOrientationsAndSizes) {
    for (uint16_t orientation = 1; orientation <= 8; ++orientation)
        for (const uint16_t bits : {8, 16})
            expect_read({.bits = bits, .orientation = orientation});
    for (const uint16_t bits : {1, 2, 4, 8, 16})
        expect_read({.bits = bits, .photometric = PHOTOMETRIC_PALETTE});
    expect_read({.samples = 4, .photometric = PHOTOMETRIC_SEPARATED});
    expect_read({.samples = 4, .photometric = PHOTOMETRIC_SEPARATED, .rows = 16, .tile = 16});
    expect_read({.mode = "wb", .bits = 16, .rows = 80, .tile = 16, .height = 600});
    expect_read({.samples = 3,
                 .photometric = PHOTOMETRIC_YCBCR,
                 .compression = COMPRESSION_JPEG,
                 .rows = 16,
                 .spoils = true});
    expect_read({.samples = 3}); // two extra samples beside gray
    expect_read({.bits = 1, .photometric = PHOTOMETRIC_MASK});
    expect_read({.bits = 1, .fill_order = 2});
    expect_read({.bits = 16, .fill_order = 2});
    expect_read({.width = 1, .height = 1});
    // Strips that are large enough to be decoded row by row.
    expect_read({.bits = 16,
                 .samples = 3,
                 .photometric = 2,
                 .compression = COMPRESSION_LZW,
                 .rows = 1200,
                 .width = 1200,
                 .height = 1200});
    // Strips that are read in pieces.
    expect_read({.bits = 16, .rows = 500, .width = 500, .height = 500});
}
