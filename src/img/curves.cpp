// Circles and ellipses by incremental error terms.
// Kept: which pixels the plain walks plot, in what order, how often. Relied on by: who counts
// calls.
#include "kestu_img_shape.h"

#include "img/ellipse_line.hpp"
#include "img/plotter.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

using namespace kestu;

namespace {

// Half-axes up to 2^31 have squares whose products need more than 64 bits.
using Wide = __int128;

// The same place in all four quadrants.
kestu_error_t *plot_turned(Pixel m, int64_t x, int64_t y, double intensity, const Plotter &out) {
    return out.plot(
        {{m.x - x, m.y + y}, {m.x - y, m.y - x}, {m.x + x, m.y - y}, {m.x + y, m.y + x}},
        intensity);
}

kestu_error_t *draw_circle(Pixel m, int64_t r, const Plotter &out) {
    int64_t x = -r;
    int64_t y = 0;
    int64_t error = 2 - 2 * r;
    do {
        if (kestu_error_t *err = plot_turned(m, x, y, 1, out))
            return err;
        const int64_t before = error;
        if (before <= y)
            error += 2 * ++y + 1;
        if (before > x || error > y)
            error += 2 * ++x + 1;
    } while (x < 0);
    return nullptr;
}

// The walk ends before the tips of flat ellipses.
kestu_error_t *draw_tips(Pixel m, int64_t y, int64_t b, const Plotter &out) {
    while (y < b) {
        ++y;
        if (kestu_error_t *err = out.plot({{m.x, m.y + y}, {m.x, m.y - y}}))
            return err;
    }
    return nullptr;
}

kestu_error_t *draw_ellipse(Pixel m, int64_t a, int64_t b, const Plotter &out) {
    const Wide a2 = Wide{a} * a;
    const Wide b2 = Wide{b} * b;
    int64_t x = -a;
    int64_t y = 0;
    Wide error = (2 * x + 1) * b2 + Wide{x} * x;
    do {
        if (kestu_error_t *err = out.plot(
                {{m.x - x, m.y + y}, {m.x + x, m.y + y}, {m.x + x, m.y - y}, {m.x - x, m.y - y}}))
            return err;
        const Wide twice = 2 * error;
        if (twice >= (2 * x + 1) * b2)
            error += (2 * ++x + 1) * b2;
        if (twice <= (2 * y + 1) * a2)
            error += (2 * ++y + 1) * a2;
    } while (x <= 0);
    return draw_tips(m, y, b, out);
}

// Works on diameters, so that even and odd sizes are exact. Error terms are doubles.
kestu_error_t *draw_in_rectangle(Pixel p0, Pixel p1, const Plotter &out) {
    const int64_t a = std::abs(p1.x - p0.x);
    const int64_t b = std::abs(p1.y - p0.y);
    const int64_t odd = b & 1;
    const double a2 = static_cast<double>(a) * static_cast<double>(a);
    const double b2 = static_cast<double>(b) * static_cast<double>(b);
    double dx = 4 * static_cast<double>(1 - a) * b2;
    double dy = 4 * static_cast<double>(odd + 1) * a2;
    double error = dx + dy + static_cast<double>(odd) * a2;
    int64_t left = std::min(p0.x, p1.x);
    int64_t right = left + a;
    int64_t low = std::min(p0.y, p1.y) + (b + 1) / 2;
    int64_t high = low - odd;
    do {
        if (kestu_error_t *err = out.plot({{right, low}, {left, low}, {left, high}, {right, high}}))
            return err;
        const double twice = 2 * error;
        if (twice <= dy) {
            ++low;
            --high;
            dy += 8 * a2;
            error += dy;
        }
        if (twice >= dx || 2 * error > dy) {
            ++left;
            --right;
            dx += 8 * b2;
            error += dx;
        }
    } while (left <= right);
    for (; low - high <= b; ++low, --high)
        if (kestu_error_t *err =
                out.plot({{left - 1, low}, {right + 1, low}, {left - 1, high}, {right + 1, high}}))
            return err;
    return nullptr;
}

// A circle of width 1 on its way. Every quadrant begins and ends with an end of an axis, which is
// plotted in full both times.
class SmoothCircle {
  public:
    SmoothCircle(Pixel m, int64_t r, const Plotter &out)
        : m_(m), r_(r), line_(static_cast<double>(r), static_cast<double>(r), 1), out_(out) {}

    kestu_error_t *draw() const;

  private:
    double part_of_pixel(int64_t x, int64_t y) const {
        return line_.part_of_pixel(static_cast<double>(x), static_cast<double>(y));
    }

    // The pixels beside the walk are plotted only when a part of them is covered. The middle of the
    // smallest circle would be its own neighbour in all quadrants, and is left out.
    kestu_error_t *plot_beside(int64_t x, int64_t y) const {
        const double part = x == 0 && y == 0 ? 0 : part_of_pixel(x, y);
        return part > 0 ? plot_turned(m_, x, y, part, out_) : nullptr;
    }

    Pixel m_;
    int64_t r_;
    EllipseLine line_;
    Plotter out_;
};

kestu_error_t *SmoothCircle::draw() const {
    int64_t x = -r_;
    int64_t y = 0;
    int64_t error = 2 - 2 * r_;
    for (;;) {
        const bool at_end = y == 0 || x >= 0;
        if (kestu_error_t *err = plot_turned(m_, x, y, at_end ? 1 : part_of_pixel(x, y), out_))
            return err;
        if (x >= 0)
            return nullptr;
        const Pixel at = {x, y};
        const int64_t before = error;
        if (before + at.y > 0) {
            if (kestu_error_t *err = plot_beside(at.x, at.y + 1))
                return err;
            error += 2 * ++x + 1;
        }
        if (before + at.x <= 0) {
            if (kestu_error_t *err = plot_beside(at.x + 1, at.y))
                return err;
            error += 2 * ++y + 1;
        }
    }
}

} // namespace

kestu_error_t *kestu_img_circle(int xm, int ym, int r, kestu_img_plot_func plot, void *data) {
    return draw_circle({xm, ym}, r, {plot, data});
}

kestu_error_t *kestu_img_ellipse(int xm, int ym, int a, int b, kestu_img_plot_func plot,
                                 void *data) {
    return draw_ellipse({xm, ym}, a, b, {plot, data});
}

kestu_error_t *kestu_img_ellipser(int x0, int y0, int x1, int y1, kestu_img_plot_func plot,
                                  void *data) {
    return draw_in_rectangle({x0, y0}, {x1, y1}, {plot, data});
}

kestu_error_t *kestu_img_circle_aa(int xm, int ym, int r, kestu_img_plot_func plot, void *data) {
    return SmoothCircle({xm, ym}, r, {plot, data}).draw();
}
