// A page that is read row by row.
#pragma once

#include "bands.hpp"

namespace kestu::tiff {

class Reader {
  public:
    [[nodiscard]] kestu_error_t *open(const char *path, const kestu_tiff_options_t *options);

    // The next row of levels; the first after the last.
    [[nodiscard]] kestu_error_t *row(void *out);

    // The next rows of levels, of which there are `count` places; how many were read.
    [[nodiscard]] kestu_error_t *read_rows(void *const *rows, uint32_t &count);

    Handle &handle() { return handle_; }
    const kestu_tiff_info_t &info() const { return page_.info; }
    uint64_t max_memory() const { return page_.max_memory; }
    uint64_t row_bytes() const { return page_.info.width * page_.level_bytes(); }

    // Fills all of a record but the matrices.
    [[nodiscard]] kestu_error_t *fill(kestu_img_t &img);

  private:
    [[nodiscard]] kestu_error_t *stretch();
    [[nodiscard]] kestu_error_t *stored_row(uint32_t row, void *out);
    [[nodiscard]] kestu_error_t *load_turned();
    bool reads_in_place() const;
    void turned_row(uint32_t row, void *out) const;

    Handle handle_;
    Page page_;
    Bands bands_;
    Levels levels_;
    Block turned_; // all levels of a page that is turned
    uint32_t next_ = 0;
};

// The tags of the page at which `handle` stands.
int each_tag(Handle &handle, kestu_tiff_tag_func func, void *baton);

} // namespace kestu::tiff
