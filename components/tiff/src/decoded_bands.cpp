// Bands that libtiff decodes: strips, rows of strips, tiles, and what it would display.
#include "bands.hpp"

#include <algorithm>
#include <cstring>

namespace kestu::tiff {

kestu_error_t *Bands::load_strip(uint32_t row) {
    const Page &page = *page_;
    const uint32_t rows = rows_from(row, page.block_height);
    const uint64_t size = std::min(plane_bytes_, TIFFVStripSize64(handle_->tiff(), rows));
    bool whole = true;
    for (int i = 0; i < planes_; ++i) {
        const uint32_t strip =
            TIFFComputeStrip(handle_->tiff(), row, static_cast<uint16_t>(i + page.first_channel));
        if (page.lenient)
            std::memset(plane(i), 0, plane_bytes_);
        const tmsize_t got =
            TIFFReadEncodedStrip(handle_->tiff(), strip, plane(i), static_cast<tmsize_t>(size));
        whole = whole && got >= 0 && static_cast<uint64_t>(got) >= rows * page.row_bytes;
    }
    end_ = row + rows;
    return settle(whole, "A strip cannot be decoded.", uint64_t{rows} * page.width);
}

kestu_error_t *Bands::load_scanline(uint32_t row) {
    if (page_->lenient)
        std::memset(plane(0), 0, row_bytes_);
    const bool whole = TIFFReadScanline(handle_->tiff(), plane(0), row, 0) == 1;
    end_ = row + 1;
    return settle(whole, "A strip cannot be decoded.", page_->width);
}

// Row r of a channel of the tiles is put where `place(channel, r)` says.
template <typename Place>
kestu_error_t *Bands::read_tiles(uint32_t row, Place place) {
    const Page &page = *page_;
    const uint32_t rows = rows_from(row, page.block_height);
    const uint64_t stride = block_.size() / page.block_height;
    for (int i = 0; i < planes_; ++i)
        for (uint64_t column = 0; column < page.width; column += page.block_width) {
            if (page.lenient)
                std::memset(block_.data(), 0, block_.size());
            const uint32_t tile =
                TIFFComputeTile(handle_->tiff(), static_cast<uint32_t>(column), row, 0,
                                static_cast<uint16_t>(i + page.first_channel));
            const auto size = static_cast<tmsize_t>(block_.size());
            const bool whole =
                TIFFReadEncodedTile(handle_->tiff(), tile, block_.data(), size) == size;
            const uint64_t pixels =
                rows * std::min<uint64_t>(page.block_width, page.width - column);
            if (kestu_error_t *err = settle(whole, "A tile cannot be decoded.", pixels))
                return err;
            const uint64_t at = column * pixel_bits() / 8;
            const uint64_t bytes = std::min(stride, row_bytes_ - at);
            for (uint32_t r = 0; r < rows; ++r)
                std::memcpy(place(i, r) + at, block_.data() + r * stride, bytes);
        }
    return nullptr;
}

kestu_error_t *Bands::load_tiles(uint32_t row) {
    end_ = row + rows_from(row, page_->block_height);
    return read_tiles(row, [this](int i, uint32_t r) { return plane(i) + r * row_bytes_; });
}

kestu_error_t *Bands::read_tiles_into(uint32_t first, void *const *rows, uint32_t &count) {
    const uint32_t of_tiles = rows_from(first, page_->block_height);
    const bool fit = first % page_->block_height == 0 && count >= of_tiles;
    count = fit ? of_tiles : 0;
    return fit ? read_tiles(first, [=](int, uint32_t r) { return static_cast<uint8_t *>(rows[r]); })
               : nullptr;
}

// The luma of what libtiff would show: rows from the bottom, red in the lowest byte.
kestu_error_t *Bands::read_displayed(uint32_t row, uint32_t column, uint32_t rows) {
    const Page &page = *page_;
    auto *raster = reinterpret_cast<uint32_t *>(block_.data());
    TIFF *tiff = handle_->tiff();
    if (page.lenient)
        std::memset(block_.data(), 0, block_.size());
    const bool whole = page.info.tiled ? TIFFReadRGBATileExt(tiff, column, row, raster, 1) == 1
                                       : TIFFReadRGBAStripExt(tiff, row, raster, 1) == 1;
    const uint32_t columns = std::min(page.block_width, page.width - column);
    const uint32_t last = (page.info.tiled ? page.block_height : rows) - 1;
    for (uint32_t r = 0; r < rows; ++r) {
        const uint32_t *from = raster + uint64_t{last - r} * page.block_width;
        uint8_t *to = plane(0) + r * row_bytes_ + column;
        for (uint32_t c = 0; c < columns; ++c)
            to[c] = static_cast<uint8_t>((299 * TIFFGetR(from[c]) + 587 * TIFFGetG(from[c]) +
                                          114 * TIFFGetB(from[c]) + 500) /
                                         1000);
    }
    return settle(whole, "A strip or tile cannot be decoded.", uint64_t{rows} * columns);
}

kestu_error_t *Bands::load_displayed(uint32_t row) {
    const Page &page = *page_;
    const uint32_t rows = rows_from(row, page.block_height);
    for (uint64_t column = 0; column < page.width; column += page.block_width)
        if (kestu_error_t *err = read_displayed(row, static_cast<uint32_t>(column), rows))
            return err;
    end_ = row + rows;
    return nullptr;
}

} // namespace kestu::tiff
