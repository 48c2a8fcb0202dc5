// A picture made as small or as large as a terminal shows it.
#pragma once

#include "image/selection.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace program {

// Brightnesses from 0, black, to 255, row by row.
struct Thumbnail {
    int width = 0, height = 0;
    std::vector<uint8_t> pixels;

    int at(int x, int y) const {
        return y < height ? pixels[static_cast<size_t>(y) * static_cast<size_t>(width) +
                                   static_cast<size_t>(x)]
                          : 0;
    }
};

// The levels that are shown as black and as white.
struct Contrast {
    double low = 0, high = 255;
};

// The part `part` of the picture, fitted into `width` x `height` pixels, each the mean of those
// that it covers.
kestu_error_t *make_thumbnail(Source &source, const Rectangle &part, const Contrast &contrast,
                              int width, int height, Thumbnail &out);

// How a terminal can show pictures.
enum class Display { ascii, gray, colours, true_colour, sixel, kitty };

// What the terminal answers, or what its variables say.
Display display_of_output(bool unicode);

struct Screen {
    int columns = 80, rows = 24;
    int cell_width = 8, cell_height = 16; // in pixels
};
Screen screen_of_output();

// The picture in the terminal's codes. Its pixels are half characters, or those of the screen.
std::string blocks(const Thumbnail &picture, Display display);
std::string ascii_art(const Thumbnail &picture);
std::string sixels(const Thumbnail &picture);
std::string kitty(const Thumbnail &picture, int columns, int rows);

} // namespace program
