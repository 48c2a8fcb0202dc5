// The rows of samples of a page, a band of them at a time.
#pragma once

#include "samples.hpp"

namespace kestu::tiff {

class Bands {
  public:
    // Makes room for a band, and looks whether the file has what a direct page needs of it.
    [[nodiscard]] kestu_error_t *open(Handle &handle, Page &page);

    // Finds the row after the last one that was asked for, or the row 0.
    [[nodiscard]] kestu_error_t *find(uint32_t row, RawRow &out);

    // Reads rows of one plane, of a direct page or of tiles, straight to their places: from `first`
    // on, as many as are given and stand together in the file. `count` becomes their number: 0 when
    // they have to be found one by one, since tiles begin above or end below them.
    [[nodiscard]] kestu_error_t *read_into(uint32_t first, void *const *rows, uint32_t &count);

  private:
    [[nodiscard]] kestu_error_t *check_strips();
    [[nodiscard]] kestu_error_t *load(uint32_t row);
    [[nodiscard]] kestu_error_t *load_direct(uint32_t row);
    [[nodiscard]] kestu_error_t *load_strip(uint32_t row);
    [[nodiscard]] kestu_error_t *load_scanline(uint32_t row);
    [[nodiscard]] kestu_error_t *load_tiles(uint32_t row);
    template <typename Place>
    [[nodiscard]] kestu_error_t *read_tiles(uint32_t row, Place place);
    [[nodiscard]] kestu_error_t *read_tiles_into(uint32_t first, void *const *rows,
                                                 uint32_t &count);
    [[nodiscard]] kestu_error_t *load_displayed(uint32_t row);
    [[nodiscard]] kestu_error_t *settle(bool read, const char *message, uint64_t pixels);
    [[nodiscard]] kestu_error_t *read_displayed(uint32_t row, uint32_t column, uint32_t rows);
    uint64_t strip_bytes_in_file(uint32_t strip) const;

    uint64_t pixel_bits() const;
    uint32_t rows_together(uint32_t first, uint32_t most) const;
    uint32_t rows_from(uint32_t row, uint64_t most) const;
    uint8_t *plane(int channel) const {
        return band_.data() + static_cast<uint64_t>(channel) * plane_bytes_;
    }

    Handle *handle_ = nullptr;
    Page *page_ = nullptr;
    bool by_scanline_ = false;
    int planes_ = 1;           // that are read
    uint32_t rows_ = 0;        // a band has room for
    uint64_t row_bytes_ = 0;   // from a row to the next
    uint64_t plane_bytes_ = 0; // from a plane to the next
    uint32_t first_ = 0, end_ = 0;
    Block band_;
    Block block_; // a tile, or pixels as libtiff displays them
};

} // namespace kestu::tiff
