#include "bands.hpp"

#include <algorithm>
#include <cstring>

#include <sys/uio.h>
#include <unistd.h>

namespace kestu::tiff {
namespace {

constexpr uint64_t direct_bytes = 256 << 10; // stays in the processor's cache
constexpr uint32_t rows_at_once = 256;       // that a call of the system fills
constexpr uint64_t strip_bytes = 8 << 20;    // above, strips are decoded row by row

// Reads what there is of `size` bytes.
uint64_t read_at(int fd, uint8_t *out, uint64_t size, uint64_t at) {
    uint64_t done = 0;
    while (done < size) {
        const ssize_t moved = pread(fd, out + done, size - done, static_cast<off_t>(at + done));
        if (moved <= 0)
            break;
        done += static_cast<uint64_t>(moved);
    }
    return done;
}

void swap_samples(uint8_t *samples, uint64_t bytes, int bits) {
    const auto count = static_cast<tmsize_t>(bytes * 8 / static_cast<uint64_t>(bits));
    switch (bits) {
    case 16: // as the compiler makes it, several at once
        for (auto *s = reinterpret_cast<uint16_t *>(samples), *end = s + count; s < end; ++s)
            *s = __builtin_bswap16(*s);
        return;
    case 24:
        return TIFFSwabArrayOfTriples(samples, count);
    case 32:
        return TIFFSwabArrayOfLong(reinterpret_cast<uint32_t *>(samples), count);
    case 64:
        return TIFFSwabArrayOfLong8(reinterpret_cast<uint64_t *>(samples), count);
    default:
        return;
    }
}

} // namespace

// Of one plane.
uint64_t Bands::pixel_bits() const {
    return static_cast<uint64_t>(page_->info.bits) *
           static_cast<uint64_t>(page_->apart() ? 1 : page_->info.samples);
}

uint32_t Bands::rows_from(uint32_t row, uint64_t most) const {
    return static_cast<uint32_t>(std::min<uint64_t>(page_->height - row, most));
}

// Rows of samples stand one after another, but where tiles reach beyond the right edge.
kestu_error_t *Bands::open(Handle &handle, Page &page) {
    handle_ = &handle;
    page_ = &page;
    if (page.block_height == 0 || page.block_width == 0)
        return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "Strips or tiles have no size.");
    planes_ = page.apart() ? page.channels : 1;
    row_bytes_ = page.row_bytes;
    rows_ = page.block_height;
    TIFF *tiff = handle.tiff();
    if (page.colour == Colour::displayed) {
        planes_ = 1;
        row_bytes_ = page.width;
        const uint64_t raster = product(uint64_t{page.block_width} * page.block_height, 4);
        if (kestu_error_t *err = block_.make(raster, page.max_memory))
            return err;
    } else if (page.info.tiled) {
        if (page.block_width < page.width && page.block_width * pixel_bits() % 8 != 0)
            return handle.failure(KESTU_ERR_IMAGE_STRUCTURE, "Tiles end within a byte.");
        if (kestu_error_t *err = block_.make(TIFFTileSize64(tiff), page.max_memory))
            return err;
    } else if (page.direct) {
        const uint64_t fitting = std::max<uint64_t>(direct_bytes / row_bytes_, 1);
        rows_ = static_cast<uint32_t>(std::min<uint64_t>(page.height, fitting));
    } else {
        const bool whole_only = page.apart() || page.info.compression == COMPRESSION_JBIG;
        by_scanline_ = !whole_only && product(row_bytes_, rows_) > strip_bytes;
        row_bytes_ = std::max(row_bytes_, TIFFScanlineSize64(tiff));
        rows_ = by_scanline_ ? 1 : rows_;
    }
    rows_ = std::min(rows_, page.height);
    plane_bytes_ = product(row_bytes_, rows_);
    const uint64_t size = product(plane_bytes_, static_cast<uint64_t>(planes_));
    if (kestu_error_t *err = check_memory(size, page.max_memory))
        return err;
    if (!page.direct) // others are mostly read in place, and make room when they are not
        if (kestu_error_t *err = band_.make(size, page.max_memory))
            return err;
    return page.direct && !page.lenient ? check_strips() : nullptr;
}

uint64_t Bands::strip_bytes_in_file(uint32_t strip) const {
    const uint64_t at = TIFFGetStrileOffset(handle_->tiff(), strip);
    const uint64_t bytes = TIFFGetStrileByteCount(handle_->tiff(), strip);
    return at == 0 || at > handle_->file_size() ? 0 : std::min(bytes, handle_->file_size() - at);
}

kestu_error_t *Bands::check_strips() {
    const Page &page = *page_;
    const uint32_t in_plane = (page.height - 1) / page.block_height + 1;
    for (uint32_t i = 0; i < in_plane * static_cast<uint32_t>(planes_); ++i) {
        const uint32_t row = i % in_plane * page.block_height;
        const uint64_t needed = rows_from(row, page.block_height) * page.row_bytes;
        if (strip_bytes_in_file(i) < needed)
            return KESTU_TIFF_FAIL(KESTU_ERR_INCOMPLETE_DATA,
                                   handle_->take_complaint(KESTU_ERR_INCOMPLETE_DATA),
                                   "The strip %u has %llu bytes of %llu.", i,
                                   static_cast<unsigned long long>(strip_bytes_in_file(i)),
                                   static_cast<unsigned long long>(needed));
    }
    return nullptr;
}

// Without lenience any complaint of libtiff's is a failure: some decoders only complain.
kestu_error_t *Bands::settle(bool read, const char *message, uint64_t pixels) {
    if (read && !handle_->complained())
        return nullptr;
    if (!page_->lenient)
        return handle_->failure(KESTU_ERR_INCOMPLETE_DATA, message);
    handle_->forget_complaint();
    page_->info.lost += pixels;
    return nullptr;
}

kestu_error_t *Bands::load_direct(uint32_t row) {
    const Page &page = *page_;
    if (!band_.data())
        if (kestu_error_t *err =
                band_.make(plane_bytes_ * static_cast<uint64_t>(planes_), page.max_memory))
            return err;
    const uint32_t strip = row / page.block_height;
    const uint32_t in_strip = row % page.block_height;
    const bool one = planes_ == 1 && !page.lenient;
    const uint32_t rows = rows_from(row, one ? rows_together(row, rows_)
                                             : std::min(rows_, page.block_height - in_strip));
    const uint64_t size = rows * page.row_bytes;
    const uint32_t strips = (page.height - 1) / page.block_height + 1;
    const uint64_t before = in_strip * page.row_bytes;
    bool whole = true;
    for (int i = 0; i < planes_; ++i) {
        const uint32_t index = strip + static_cast<uint32_t>(i) * strips;
        const uint64_t there = strip_bytes_in_file(index);
        const uint64_t wanted = one ? size : there > before ? std::min(size, there - before) : 0;
        const uint64_t at = TIFFGetStrileOffset(handle_->tiff(), index) + before;
        const uint64_t got = wanted > 0 ? read_at(handle_->fd(), plane(i), wanted, at) : 0;
        std::memset(plane(i) + got, 0, size - got);
        whole = whole && got == size;
        if (TIFFIsByteSwapped(handle_->tiff()))
            swap_samples(plane(i), size, page.info.bits);
    }
    end_ = row + rows;
    return settle(whole, "The file ends within its samples.", uint64_t{rows} * page.width);
}

// Strips mostly follow each other in the file.
uint32_t Bands::rows_together(uint32_t first, uint32_t most) const {
    TIFF *tiff = handle_->tiff();
    const uint32_t height = page_->block_height;
    uint32_t strip = first / height;
    uint32_t rows = height - first % height;
    while (rows < most && TIFFGetStrileOffset(tiff, strip + 1) ==
                              TIFFGetStrileOffset(tiff, strip) + height * page_->row_bytes) {
        rows += height;
        ++strip;
    }
    return std::min(rows, most);
}

kestu_error_t *Bands::read_into(uint32_t first, void *const *rows, uint32_t &count) {
    const Page &page = *page_;
    if (page.info.tiled)
        return read_tiles_into(first, rows, count);
    const uint32_t in_strip = first % page.block_height;
    const bool swapped = page.info.bits == 16 && TIFFIsByteSwapped(handle_->tiff());
    // Rows to swap are few, so that they still are in the cache.
    const uint64_t fitting = swapped ? std::max<uint64_t>(direct_bytes / page.row_bytes, 1) : count;
    const auto most = static_cast<uint32_t>(std::min<uint64_t>(rows_at_once, fitting));
    iovec segments[rows_at_once];
    count = rows_together(first, std::min(count, most));
    for (uint32_t i = 0; i < count; ++i)
        segments[i] = {rows[i], page.row_bytes};
    const uint64_t at =
        TIFFGetStrileOffset(handle_->tiff(), first / page.block_height) + in_strip * page.row_bytes;
    const ssize_t moved =
        preadv(handle_->fd(), segments, static_cast<int>(count), static_cast<off_t>(at));
    if (moved <= 0)
        return KESTU_TIFF_FAIL(KESTU_ERR_INCOMPLETE_DATA, nullptr,
                               "The file ends within its samples.");
    if (static_cast<uint64_t>(moved) < page.row_bytes) { // a row in pieces
        count = 1;
        auto *row = static_cast<uint8_t *>(rows[0]);
        const auto done = static_cast<uint64_t>(moved);
        if (read_at(handle_->fd(), row + done, page.row_bytes - done, at + done) <
            page.row_bytes - done)
            return KESTU_TIFF_FAIL(KESTU_ERR_INCOMPLETE_DATA, nullptr,
                                   "The file ends within its samples.");
    } else {
        count = static_cast<uint32_t>(static_cast<uint64_t>(moved) / page.row_bytes);
    }
    for (uint32_t i = 0; swapped && i < count; ++i)
        swap_samples(static_cast<uint8_t *>(rows[i]), page.row_bytes, page.info.bits);
    return nullptr;
}

kestu_error_t *Bands::load(uint32_t row) {
    first_ = row;
    if (page_->colour == Colour::displayed)
        return load_displayed(row);
    if (page_->info.tiled)
        return load_tiles(row);
    if (page_->direct)
        return load_direct(row);
    return by_scanline_ ? load_scanline(row) : load_strip(row);
}

kestu_error_t *Bands::find(uint32_t row, RawRow &out) {
    if (row < first_ || row >= end_)
        if (kestu_error_t *err = load(row)) {
            end_ = first_; // of a band that failed nothing is held
            return err;
        }
    for (int i = 0; i < planes_; ++i)
        out.planes[i] = plane(i) + (row - first_) * row_bytes_;
    return nullptr;
}

} // namespace kestu::tiff
