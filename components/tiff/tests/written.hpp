// TIFF files of every layout that libtiff writes, and what they should be read as.
#pragma once

#include "img/tiff_bytes.hpp"
#include "kestu_tiff.h"

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <ostream>

namespace kestu::test {

struct Layout {
    const char *mode = "wl"; // w, byte order, and 8 for BigTIFF
    uint16_t bits = 8, format = SAMPLEFORMAT_UINT, samples = 1;
    uint16_t photometric = PHOTOMETRIC_MINISBLACK, compression = COMPRESSION_NONE;
    uint16_t planar = PLANARCONFIG_CONTIG, orientation = 1, predictor = 1, fill_order = 1;
    uint32_t rows = 7;                // of a strip or tile
    uint32_t tile = 0;                // its width
    uint32_t width = 37, height = 53; // of the page
    bool spoils = false;              // what is read may differ a little

    friend std::ostream &operator<<(std::ostream &out, const Layout &l) {
        return out << l.mode << ' ' << l.bits << " bits, format " << l.format << ", " << l.samples
                   << " samples, photometric " << l.photometric << ", compression " << l.compression
                   << ", planar " << l.planar << ", orientation " << l.orientation << ", predictor "
                   << l.predictor << ", fill order " << l.fill_order << ", blocks " << l.tile
                   << " x " << l.rows;
    }
};

// A sample of a page: a smooth picture, so that lossy compressions come near it.
inline double value(const Layout &l, uint32_t row, uint32_t column, uint32_t sample) {
    const double part =
        0.5 + 0.5 * std::sin(row * 0.11 + sample) * std::cos(column * 0.13 - sample * 2.0);
    if (l.format == SAMPLEFORMAT_IEEEFP)
        return std::ldexp(std::round(part * 1000), -8) - 1;
    const double steps = std::ldexp(1.0, l.bits) - 1;
    return std::round(part * steps) - (l.format == SAMPLEFORMAT_INT ? (steps + 1) / 2 : 0);
}

inline uint64_t bits_of(const Layout &l, double x) {
    if (l.format != SAMPLEFORMAT_IEEEFP)
        return static_cast<uint64_t>(static_cast<int64_t>(x)) & (~uint64_t{0} >> (64 - l.bits));
    if (l.bits == 64)
        return std::bit_cast<uint64_t>(x);
    if (l.bits == 32)
        return std::bit_cast<uint32_t>(static_cast<float>(x));
    int exponent = 0; // of 16 or 24 bits
    const double fraction = std::frexp(std::fabs(x), &exponent);
    const int digits = l.bits == 16 ? 10 : 16;
    const int bias = l.bits == 16 ? 15 : 63;
    const auto mantissa = static_cast<uint64_t>(std::ldexp(fraction, digits + 1));
    const uint64_t number = x == 0 ? 0
                                   : static_cast<uint64_t>(exponent - 1 + bias) << digits |
                                         (mantissa & ((uint64_t{1} << digits) - 1));
    return number | (x < 0 ? uint64_t{1} << (l.bits - 1) : 0);
}

// Appends whole bytes as this machine has them, other depths from the highest bit on.
class Packer {
  public:
    void put(uint64_t number, unsigned bits) {
        if (bits % 8 == 0)
            for (unsigned i = 0; i < bits; i += 8)
                bytes += static_cast<char>(number >> i);
        else
            for (unsigned i = bits; i-- > 0; used_ = (used_ + 1) % 8) {
                if (used_ == 0)
                    bytes += '\0';
                bytes.back() = static_cast<char>(bytes.back() | (number >> i & 1) << (7 - used_));
            }
    }
    void end_row() { used_ = 0; }

    std::string bytes;

  private:
    unsigned used_ = 0;
};

// The samples of a block; beyond the edges they repeat the last ones.
inline std::string block(const Layout &l, uint32_t top, uint32_t left, uint32_t rows,
                         uint32_t columns, int plane) {
    Packer packer;
    for (uint32_t r = 0; r < rows; ++r, packer.end_row())
        for (uint32_t c = 0; c < columns; ++c)
            for (uint32_t s = 0; s < l.samples; ++s)
                if (plane < 0 || s == static_cast<uint32_t>(plane))
                    packer.put(bits_of(l, value(l, std::min(top + r, l.height - 1),
                                                std::min(left + c, l.width - 1), s)),
                               l.bits);
    return packer.bytes;
}

inline void set_fields(TIFF *tiff, const Layout &l) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, l.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, l.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, l.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, l.format);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, l.samples);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, l.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, l.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, l.planar);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, l.orientation);
    TIFFSetField(tiff, TIFFTAG_FILLORDER, l.fill_order);
    const int colours = l.photometric == PHOTOMETRIC_RGB || l.photometric == PHOTOMETRIC_YCBCR ? 3
                        : l.photometric == PHOTOMETRIC_SEPARATED                               ? 4
                                                                                               : 1;
    const std::vector<uint16_t> extra(8, EXTRASAMPLE_UNSPECIFIED);
    if (l.samples > colours)
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, l.samples - colours, extra.data());
    if (l.predictor > 1)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, l.predictor);
    if (l.compression == COMPRESSION_WEBP)
        TIFFSetField(tiff, TIFFTAG_WEBP_LOSSLESS, 1);
    if (l.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (l.photometric == PHOTOMETRIC_PALETTE) {
        std::vector<uint16_t> map(size_t{1} << l.bits);
        for (size_t i = 0; i < map.size(); ++i)
            map[i] = static_cast<uint16_t>(65535 - i * 65535 / (map.size() - 1));
        TIFFSetField(tiff, TIFFTAG_COLORMAP, map.data(), map.data(), map.data());
    }
    if (l.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, l.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, l.rows);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, l.rows);
    }
}

// Appends a page. False where this libtiff does not write the layout.
inline bool write_page(TIFF *tiff, const Layout &l) {
    set_fields(tiff, l);
    const bool apart = l.planar == PLANARCONFIG_SEPARATE;
    for (int plane = apart ? 0 : -1; plane < (apart ? l.samples : 0); ++plane)
        for (uint32_t top = 0; top < l.height; top += l.rows)
            for (uint32_t left = 0; left<l.width; left += l.tile> 0 ? l.tile : l.width) {
                const auto sample = static_cast<uint16_t>(std::max(plane, 0));
                const uint32_t rows = l.tile > 0 ? l.rows : std::min(l.rows, l.height - top);
                std::string bytes = block(l, top, left, rows, l.tile > 0 ? l.tile : l.width, plane);
                const auto size = static_cast<tmsize_t>(bytes.size());
                const tmsize_t put =
                    l.tile > 0
                        ? TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, left, top, 0, sample),
                                               bytes.data(), size)
                        : TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, top, sample),
                                                bytes.data(), size);
                if (put != size)
                    return false;
            }
    return TIFFWriteDirectory(tiff) == 1;
}

inline bool write_file(const char *path, const std::vector<Layout> &pages) {
    TIFFSetWarningHandler(nullptr);
    TIFF *tiff = TIFFOpen(path, pages[0].mode);
    bool written = tiff != nullptr;
    for (const Layout &page : pages)
        written = written && write_page(tiff, page);
    if (tiff)
        TIFFClose(tiff);
    return written;
}

// The level that a pixel of the file should have, by the words of the header.
inline double level(const Layout &l, uint32_t row, uint32_t column) {
    const double full = l.bits <= 8 ? 255 : 65535;
    const auto sample = [&](uint32_t s) { return value(l, row, column, s); };
    double x = sample(0);
    if (l.photometric == PHOTOMETRIC_RGB || l.photometric == PHOTOMETRIC_YCBCR)
        x = 0.299 * sample(0) + 0.587 * sample(1) + 0.114 * sample(2);
    if (l.photometric == PHOTOMETRIC_SEPARATED) // of 8 bits
        x = (255 - sample(3)) / 255 *
            (0.299 * (255 - sample(0)) + 0.587 * (255 - sample(1)) + 0.114 * (255 - sample(2)));
    const double steps = std::ldexp(1.0, l.bits) - 1;
    if (l.photometric == PHOTOMETRIC_PALETTE)
        x = steps - x;
    if (l.format == SAMPLEFORMAT_INT)
        x += (steps + 1) / 2;
    return x / steps * full;
}

} // namespace kestu::test
