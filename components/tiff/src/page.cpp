#include "page.hpp"

#include "directory.hpp"

#include <algorithm>
#include <cstring>

namespace kestu::tiff {
namespace {

constexpr uint64_t default_pixels = uint64_t{1} << 30;

template <typename Value>
Value field(TIFF *tiff, uint32_t tag, Value otherwise) {
    Value value = otherwise;
    return TIFFGetFieldDefaulted(tiff, tag, &value) ? value : otherwise;
}

// Of a field without a default.
int given(TIFF *tiff, uint32_t tag, int otherwise) {
    uint16_t value = 0;
    return TIFFGetField(tiff, tag, &value) ? value : otherwise;
}

kestu_error_t *go_to_page(Handle &handle, uint32_t wanted, kestu_tiff_info_t &info) {
    TIFF *tiff = handle.tiff();
    info.page = wanted > 0 ? wanted : 1;
    info.pages = TIFFNumberOfDirectories(tiff);
    if (info.page > info.pages)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE,
                               handle.take_complaint(KESTU_ERR_IMAGE_STRUCTURE),
                               "There is no page %u: the file has %u.", info.page, info.pages);
    if (info.page > 1 && !TIFFSetDirectory(tiff, info.page - 1))
        return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "The page cannot be read.");
    return nullptr;
}

void describe(TIFF *tiff, kestu_tiff_info_t &info) {
    info.bits = field<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    info.samples = field<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    info.format = field<uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    info.photometric = given(tiff, TIFFTAG_PHOTOMETRIC, -1);
    info.compression = field<uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    info.planar = field<uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    info.orientation = field<uint16_t>(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (info.orientation < 1 || info.orientation > 8)
        info.orientation = ORIENTATION_TOPLEFT;
    info.big_endian = TIFFIsBigEndian(tiff) != 0;
    info.tiled = TIFFIsTiled(tiff) != 0;
    info.resunit = field<uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    info.xres = double{field<float>(tiff, TIFFTAG_XRESOLUTION, 0)};
    info.yres = double{field<float>(tiff, TIFFTAG_YRESOLUTION, 0)};
    const auto usable = [](double x) { return x > 0 && x < 1e30; };
    if (!usable(info.xres) || !usable(info.yres))
        info.xres = info.yres = 0;
}

kestu_error_t *refuse(const char *what, int value) {
    return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "%s: %d", what, value);
}

kestu_error_t *check_samples(const kestu_tiff_info_t &info, Colour colour) {
    if (info.format == SAMPLEFORMAT_IEEEFP) {
        if (info.bits != 16 && info.bits != 24 && info.bits != 32 && info.bits != 64)
            return refuse("Floats of this many bits are unknown", info.bits);
    } else if (info.format > SAMPLEFORMAT_VOID || info.format < SAMPLEFORMAT_UINT) {
        return refuse("Samples of this format have no meaning in gray", info.format);
    } else if (info.bits < 1 || info.bits > 32) {
        return refuse("Integers of this many bits are not read", info.bits);
    }
    if (colour == Colour::palette && (info.bits > 16 || info.format == SAMPLEFORMAT_IEEEFP))
        return refuse("A palette of this many bits is unknown", info.bits);
    return nullptr;
}

kestu_error_t *find_palette(Handle &handle, Page &page) {
    uint16_t *red = nullptr;
    uint16_t *green = nullptr;
    uint16_t *blue = nullptr;
    if (!TIFFGetField(handle.tiff(), TIFFTAG_COLORMAP, &red, &green, &blue))
        return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "The palette is missing.");
    page.colour = Colour::palette;
    page.map[0] = red;
    page.map[1] = green;
    page.map[2] = blue;
    return nullptr;
}

// Lets libtiff give RGB, or luminances, where it can. Called once the depth has been read.
kestu_error_t *choose_colour(Handle &handle, Page &page) {
    TIFF *tiff = handle.tiff();
    kestu_tiff_info_t &info = page.info;
    info.gray = 1;
    switch (info.photometric) {
    case -1:
        if (!page.lenient)
            return handle.failure(KESTU_ERR_IMAGE_STRUCTURE,
                                  "The photometric interpretation is missing.");
        return nullptr;
    case PHOTOMETRIC_MINISWHITE:
        info.gray = 0;
        return nullptr;
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
        return nullptr;
    case PHOTOMETRIC_PALETTE:
        return find_palette(handle, page);
    case PHOTOMETRIC_YCBCR:
        if (info.compression == COMPRESSION_JPEG && info.planar == PLANARCONFIG_CONTIG) {
            TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            page.colour = Colour::rgb;
        } else {
            page.colour = Colour::displayed;
        }
        return nullptr;
    case PHOTOMETRIC_RGB:
        page.colour = Colour::rgb;
        return nullptr;
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        if (info.compression != COMPRESSION_SGILOG && info.compression != COMPRESSION_SGILOG24)
            return refuse("Logarithms of light that are not compressed as such", info.compression);
        TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
        info.bits = 32;
        info.format = SAMPLEFORMAT_IEEEFP;
        page.first_channel = info.photometric == PHOTOMETRIC_LOGLUV ? 1 : 0; // Y of XYZ
        return nullptr;
    default:
        page.colour = Colour::displayed;
        return nullptr;
    }
}

kestu_error_t *check_colour(Handle &handle, Page &page) {
    kestu_tiff_info_t &info = page.info;
    if (page.colour == Colour::displayed) {
        char why[1024] = "";
        TIFFSetField(handle.tiff(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT); // is ours to apply
        if (!TIFFRGBAImageOK(handle.tiff(), why))
            return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "libtiff: %s", why);
        info.ignored = 0;
        return nullptr;
    }
    page.channels = page.colour == Colour::rgb ? 3 : 1;
    if (page.first_channel + page.channels > info.samples)
        return refuse("Too few samples a pixel", info.samples);
    info.ignored = info.photometric == PHOTOMETRIC_LOGLUV ? 0 : info.samples - page.channels;
    return check_samples(info, page.colour);
}

// From here on, sizes can be multiplied.
kestu_error_t *check_size(Page &page, const kestu_tiff_options_t &options) {
    const uint64_t limit = options.max_pixels > 0 ? options.max_pixels : default_pixels;
    const uint64_t pixels = uint64_t{page.width} * page.height;
    if (pixels == 0)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "The page has no pixels.");
    if (pixels > limit || page.width > INT32_MAX || page.height > INT32_MAX)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr,
                               "The page has %u x %u pixels, more than the limit of %llu.",
                               page.width, page.height, static_cast<unsigned long long>(limit));
    return nullptr;
}

void lay_out(TIFF *tiff, Page &page) {
    kestu_tiff_info_t &info = page.info;
    const auto together = static_cast<uint64_t>(page.apart() ? 1 : info.samples);
    page.row_bytes = (page.width * together * static_cast<uint64_t>(info.bits) + 7) / 8;
    if (info.tiled) {
        page.block_width = field<uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
        page.block_height = field<uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    } else {
        page.block_width = page.width;
        page.block_height =
            std::min(field<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, UINT32_MAX), page.height);
    }
    page.direct = !info.tiled && info.compression == COMPRESSION_NONE &&
                  field<uint16_t>(tiff, TIFFTAG_FILLORDER, 1) == FILLORDER_MSB2LSB &&
                  page.colour != Colour::displayed;
    info.levels = page.colour == Colour::displayed || info.bits <= 8 ? 8 : 16;
    const bool transposed = info.orientation > 4;
    info.width = transposed ? page.height : page.width;
    info.height = transposed ? page.width : page.height;
    if (transposed)
        std::swap(info.xres, info.yres);
}

// What kestu_img_read takes, as it takes it.
bool is_plain(Handle &handle, const Page &page, const Directory &directory) {
    const kestu_tiff_info_t &info = page.info;
    return page.direct && !info.big_endian && !info.big_tiff && info.pages == 1 &&
           (info.bits == 8 || info.bits == 16) && info.samples == 1 &&
           (info.format == SAMPLEFORMAT_UINT || info.format == SAMPLEFORMAT_VOID) &&
           (info.photometric == 0 || info.photometric == 1) &&
           info.orientation == ORIENTATION_TOPLEFT && info.resunit != RESUNIT_NONE &&
           handle.file_size() <= UINT32_MAX && directory.lists_stand_apart();
}

} // namespace

kestu_error_t *read_page(Handle &handle, const kestu_tiff_options_t &options, Page &page) {
    TIFF *tiff = handle.tiff();
    page.lenient = options.lenient != 0;
    kestu_error_t *err = go_to_page(handle, options.page, page.info);
    if (err)
        return err;
    if (!TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &page.width) ||
        !TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &page.height))
        return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "The page has no size.");
    Directory directory(handle);
    describe(tiff, page.info);
    page.info.big_tiff = directory.big_tiff();
    if ((err = check_size(page, options)) || (err = choose_colour(handle, page)) ||
        (err = check_colour(handle, page)))
        return err;
    if (!TIFFIsCODECConfigured(static_cast<uint16_t>(page.info.compression)))
        return KESTU_TIFF_FAIL(KESTU_ERR_INCOMPLETE_DATA, nullptr,
                               "This libtiff does not know the compression %d.",
                               page.info.compression);
    lay_out(tiff, page);
    page.info.plain = is_plain(handle, page, directory);
    if (!page.lenient && handle.complained())
        return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "The page is damaged.");
    return nullptr;
}

} // namespace kestu::tiff
