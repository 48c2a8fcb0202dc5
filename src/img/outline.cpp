// Outlines of ellipses that cover pixels in part.
#include "kestu_img_shape.h"

#include "img/ellipse_line.hpp"
#include "img/plotter.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

using namespace kestu;

namespace {

constexpr double thin = 1.0;
constexpr double widest = 0x1p33; // covers everything that an int can name

// Columns or rows by their distance from the middle of the rectangle, which is on a pixel or, when
// the side is odd, between two.
class Axis {
  public:
    Axis(int64_t from, int64_t to) : low_(std::min(from, to)), side_(std::max(from, to) - low_) {}

    double half_axis() const { return static_cast<double>(side_) / 2; }
    double distance(int64_t i) const { return static_cast<double>(i) + (side_ % 2 ? 0.5 : 0.0); }
    // The last one within reach of the ellipse that an int can still name on one side.
    int64_t last_within(double reach) const {
        const int64_t nameable = std::max(std::numeric_limits<int>::max() - above(0),
                                          below(0) - std::numeric_limits<int>::min());
        const double last = std::floor(half_axis() + reach - distance(0));
        return std::min(nameable, static_cast<int64_t>(last));
    }
    int64_t above(int64_t i) const { return low_ + (side_ + 1) / 2 + i; }
    int64_t below(int64_t i) const { return low_ + side_ / 2 - i; }

  private:
    int64_t low_, side_;
};

class Outline {
  public:
    Outline(Pixel p0, Pixel p1, double width, const Plotter &out)
        : columns_(p0.x, p1.x), rows_(p0.y, p1.y),
          line_(columns_.half_axis(), rows_.half_axis(), width),
          reach_(width / 2 + std::numbers::sqrt2 / 2), out_(out) {}

    // Goes through a quadrant row by row, in each from the outside to where the inside begins or
    // the middle is reached. From row to row the outer end moves towards the middle, or by rounding
    // one pixel away from it.
    kestu_error_t *draw() const {
        const int64_t last_row = rows_.last_within(reach_);
        const int64_t last_column = columns_.last_within(reach_);
        int64_t column = last_column;
        for (int64_t row = 0; row <= last_row; ++row) {
            column = std::min(column + 1, last_column);
            double intensity = coverage(column, row);
            while (intensity <= 0 && --column >= 0)
                intensity = coverage(column, row);
            if (column < 0)
                break;
            if (kestu_error_t *err = draw_row(column, row, intensity))
                return err;
        }
        return nullptr;
    }

  private:
    // From the first pixel that has a part, `intensity`.
    kestu_error_t *draw_row(int64_t column, int64_t row, double intensity) const {
        while (intensity > 0) {
            if (kestu_error_t *err = plot_mirrored(column, row, intensity))
                return err;
            if (column == 0)
                break;
            intensity = coverage(--column, row);
        }
        return nullptr;
    }

    double coverage(int64_t column, int64_t row) const {
        return line_.part_of_pixel(columns_.distance(column), rows_.distance(row));
    }

    kestu_error_t *plot_mirrored(int64_t column, int64_t row, double intensity) const {
        const int64_t right = columns_.above(column);
        const int64_t left = columns_.below(column);
        const int64_t low = rows_.above(row);
        const int64_t high = rows_.below(row);
        if (left == right && low == high)
            return out_.plot({{right, low}}, intensity);
        if (left == right)
            return out_.plot({{right, low}, {right, high}}, intensity);
        if (low == high)
            return out_.plot({{right, low}, {left, low}}, intensity);
        return out_.plot({{right, low}, {left, low}, {left, high}, {right, high}}, intensity);
    }

    Axis columns_, rows_;
    EllipseLine line_;
    double reach_; // of the line from the ellipse to the farthest pixel's centre
    Plotter out_;
};

kestu_error_t *draw_outline(Pixel p0, Pixel p1, double width, const Plotter &out) {
    return Outline(p0, p1, width, out).draw();
}

int rounded(double coordinate) {
    if (std::isnan(coordinate))
        return 0;
    constexpr double lowest = std::numeric_limits<int>::min();
    constexpr double highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::round(std::clamp(coordinate, lowest, highest)));
}

} // namespace

kestu_error_t *kestu_img_ellipser_aa(int x0, int y0, int x1, int y1, kestu_img_plot_func plot,
                                     void *data) {
    return draw_outline({x0, y0}, {x1, y1}, thin, {plot, data});
}

// The rectangle may reach beyond int, which is why this does not go through the function above.
kestu_error_t *kestu_img_ellipse_aa(int xm, int ym, int a, int b, kestu_img_plot_func plot,
                                    void *data) {
    const Pixel low = {int64_t{xm} - a, int64_t{ym} - b};
    const Pixel high = {int64_t{xm} + a, int64_t{ym} + b};
    return draw_outline(low, high, thin, {plot, data});
}

kestu_error_t *kestu_img_ellipser_waa(double x0, double y0, double x1, double y1, double width,
                                      kestu_img_plot_func plot, void *data) {
    const Pixel p0 = {rounded(x0), rounded(y0)};
    const Pixel p1 = {rounded(x1), rounded(y1)};
    const double drawn = width > thin ? std::min(width, widest) : thin;
    return draw_outline(p0, p1, drawn, {plot, data});
}

kestu_error_t *kestu_img_ellipse_waa(double xm, double ym, double a, double b, double width,
                                     kestu_img_plot_func plot, void *data) {
    return kestu_img_ellipser_waa(xm - a, ym - b, xm + a, ym + b, width, plot, data);
}

kestu_error_t *kestu_img_circle_waa(double xm, double ym, double r, double width,
                                    kestu_img_plot_func plot, void *data) {
    return kestu_img_ellipse_waa(xm, ym, r, r, width, plot, data);
}
