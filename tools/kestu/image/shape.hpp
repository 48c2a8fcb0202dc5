// Shapes that are drawn into pictures, however large.
#pragma once

#include "kestu_img_shape.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace program {

struct LineStyle {
    bool smooth = false;
    std::optional<double> width;
};

// An ellipse by its middle and half-axes.
struct Outline {
    double x, y, a, b;
};

struct Argument {
    const char *name;
    const char *description;
};

using Numbers = std::array<double, 4>;

struct ShapeKind {
    const char *name;
    const char *description;
    std::vector<Argument> arguments;
    kestu_error_t *(*draw)(const Numbers &at, const LineStyle &style, kestu_img_plot_func plot,
                           void *data);
    Outline (*outline)(const Numbers &at);
};

const std::vector<ShapeKind> &shape_kinds();

struct DrawnShape {
    const ShapeKind *kind = nullptr;
    Numbers at{};
};

// "circle 24 20 15"; false for anything else.
bool parse_shape(const std::string &words, DrawnShape &out);

// What is wrong with the numbers of a shape; empty when nothing is.
std::string fault_of(const DrawnShape &shape, const LineStyle &style);

// Plots what lies within a picture of this size, and of smaller shapes what lies beyond.
kestu_error_t *draw_shape(const DrawnShape &shape, const LineStyle &style, int width, int height,
                          kestu_img_plot_func plot, void *data);

} // namespace program
