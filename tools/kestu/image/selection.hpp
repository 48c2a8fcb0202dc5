// The pixels of a picture that are measured: all, or those of a rectangle, an ellipse, or a mask.
#pragma once

#include "image/source.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace program {

struct Rectangle {
    int x = 0, y = 0, width = 0, height = 0;
};

// As the options have it.
struct Region {
    std::string rectangle, ellipse, mask;

    bool all() const { return rectangle.empty() && ellipse.empty() && mask.empty(); }
};

// "X,Y,W,H", which has to lie within the picture.
kestu_error_t *parse_rectangle(const std::string &words, const kestu_img_t &form, Rectangle &out);

// Tells of each pixel of a row whether it is in all parts of a region.
class Selection {
  public:
    kestu_error_t *open(const Region &region, const kestu_img_t &form);

    bool all() const { return all_; }
    // The columns and rows outside of which nothing is selected.
    const Rectangle &bounds() const { return bounds_; }

    // For the rows one after another from row 0 on: a byte for each column, 1 or 0.
    const std::vector<uint8_t> &row(int y) {
        if (ellipse_ || !mask_.empty() || y == bounds_.y || y == bounds_.y + bounds_.height ||
            y == 0)
            fill(y);
        return inside_;
    }

  private:
    struct Ellipse {
        double x, y, a, b;
    };

    kestu_error_t *parse_ellipse(const std::string &words);
    kestu_error_t *read_mask(const std::string &path, const kestu_img_t &form);
    void fill(int y);

    bool all_ = true;
    Rectangle bounds_;
    std::optional<Ellipse> ellipse_;
    std::vector<bool> mask_; // row by row
    std::vector<uint8_t> inside_;
};

} // namespace program
