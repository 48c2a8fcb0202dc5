// What a page is: its fields, checked, and how its samples lie in the file.
#pragma once

#include "handle.hpp"

namespace kestu::tiff {

// What the samples of a pixel mean.
enum class Colour { gray, palette, rgb, displayed };

struct Page {
    kestu_tiff_info_t info{};
    Colour colour = Colour::gray;
    bool direct = false;       // uncompressed strips, read without libtiff
    int channels = 1;          // samples of a pixel that are looked at
    int first_channel = 0;     // the first of these
    uint32_t width = 0;        // as in the file, before the orientation is applied
    uint32_t height = 0;       // the same
    uint32_t block_width = 0;  // of a tile, or the width
    uint32_t block_height = 0; // of a tile or strip
    uint64_t row_bytes = 0;    // of a row of samples in one plane
    uint64_t max_memory = 0;
    bool lenient = false;
    const uint16_t *map[3] = {}; // palette

    bool apart() const { return info.planar == PLANARCONFIG_SEPARATE && info.samples > 1; }
    bool turned() const { return info.orientation > 2; } // more than left and right exchanged
    uint64_t level_bytes() const { return static_cast<uint64_t>(info.levels / 8); }
};

// Goes to the page that `options` ask for and describes it.
[[nodiscard]] kestu_error_t *read_page(Handle &handle, const kestu_tiff_options_t &options,
                                       Page &page);

} // namespace kestu::tiff
