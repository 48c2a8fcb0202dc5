// Files exchanged with libtiff, in both directions.
#include "picture.hpp"
#include "support/test.hpp"
#include "tiff_bytes.hpp"

#include <tiffio.h>

using namespace kestu::test;

namespace {

struct Layout {
    uint32_t rows_per_strip;
    uint16_t photometric, unit;
};

template <typename Sample>
void write_directory(TIFF *tiff, const Picture<Sample> &picture, const Layout &layout) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.img.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.img.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.img.bits[0]);
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
    for (uint32_t r = 0; r < picture.rows.size(); ++r)
        ASSERT_EQ(TIFFWriteScanline(tiff, picture.rows[r], r), 1);
    ASSERT_EQ(TIFFWriteDirectory(tiff), 1);
}

} // namespace

template <typename Sample>
class LibtiffExchange : public testing::Test {};
using Depths = testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(LibtiffExchange, Depths, );

// Strips of one row to all rows. Two strips are left out: libtiff keeps their sizes in the entry.
TYPED_TEST(LibtiffExchange, ItsFilesAreRead) {
    const Picture<TypeParam> picture(47, 61);
    for (const uint32_t rows_per_strip : {1, 2, 7, 16, 47})
        for (const uint16_t unit : {0, 2, 3}) {
            SCOPED_TRACE(testing::Message() << rows_per_strip << " rows a strip, unit " << unit);
            const MemoryFile file;
            TIFF *tiff = TIFFOpen(file.path(), "wl");
            ASSERT_NE(tiff, nullptr);
            const auto photometric = static_cast<uint16_t>(rows_per_strip % 2);
            write_directory(tiff, picture, {rows_per_strip, photometric, unit});
            TIFFClose(tiff);
            Image img;
            ASSERT_OK(kestu_img_read(file.path(), &img));
            EXPECT_EQ(img.width, 61);
            EXPECT_EQ(img.bits[0], picture.img.bits[0]);
            EXPECT_EQ(img.pixels(), picture.pixels());
            EXPECT_EQ(img.photometric, photometric);
            EXPECT_STREQ(img.software, "a test of readers");
            const double scale = unit == 0 ? 0.0 : unit == 3 ? 2.54 : 1.0;
            EXPECT_EQ(img.xres, 300.0 * scale);
            EXPECT_EQ(img.yres, 150.5 * scale);
        }
}

// Some images have more rows than one system call takes.
TYPED_TEST(LibtiffExchange, ItReadsWhatIsWritten) {
    for (const auto &[height, width] : {std::pair{1, 1}, {61, 47}, {600, 3}, {2, 700}}) {
        const Picture<TypeParam> picture(height, width);
        const MemoryFile file;
        ASSERT_OK(kestu_img_write_tiff(file.path(), &picture.img));
        TIFF *tiff = TIFFOpen(file.path(), "r");
        ASSERT_NE(tiff, nullptr);
        uint32_t rows = 0;
        EXPECT_TRUE(TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows));
        EXPECT_EQ(rows, picture.rows.size());
        std::vector<TypeParam> row(picture.samples[0].size());
        ASSERT_EQ(TIFFScanlineSize64(tiff), row.size() * sizeof(TypeParam));
        for (uint32_t r = 0; r < rows; ++r) {
            ASSERT_EQ(TIFFReadScanline(tiff, row.data(), r), 1);
            EXPECT_EQ(row, picture.samples[r]);
        }
        TIFFClose(tiff);
    }
}
