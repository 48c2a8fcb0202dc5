#include "image/shape.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

namespace program {
namespace {

// Shapes with more pixels than this, about, are not walked but measured at those of the picture.
constexpr double largest_walk = 1 << 22;

kestu_error_t *draw_circle(const Numbers &at, const LineStyle &style, kestu_img_plot_func plot,
                           void *data) {
    const auto [x, y, r, unused] = at;
    if (style.width)
        return kestu_img_circle_waa(x, y, r, *style.width, plot, data);
    const auto draw = style.smooth ? kestu_img_circle_aa : kestu_img_circle;
    return draw(static_cast<int>(x), static_cast<int>(y), static_cast<int>(r), plot, data);
}

// Both forms of ellipses take four numbers.
template <auto plain, auto smooth, auto wide>
kestu_error_t *draw_ellipse(const Numbers &at, const LineStyle &style, kestu_img_plot_func plot,
                            void *data) {
    const auto [p, q, r, s] = at;
    if (style.width)
        return wide(p, q, r, s, *style.width, plot, data);
    const auto draw = style.smooth ? smooth : plain;
    return draw(static_cast<int>(p), static_cast<int>(q), static_cast<int>(r), static_cast<int>(s),
                plot, data);
}

Outline outline_of_circle(const Numbers &at) {
    return {at[0], at[1], at[2], at[2]};
}
Outline outline_of_ellipse(const Numbers &at) {
    return {at[0], at[1], at[2], at[3]};
}
Outline outline_in_rectangle(const Numbers &at) {
    return {at[0] / 2 + at[2] / 2, at[1] / 2 + at[3] / 2, std::fabs(at[2] / 2 - at[0] / 2),
            std::fabs(at[3] / 2 - at[1] / 2)};
}

// How far a point is from an ellipse, near it: the value of the function that is 0 on it, by the
// length of its gradient.
double distance(const Outline &outline, double x, double y) {
    const double a = std::max(outline.a, 0.5);
    const double b = std::max(outline.b, 0.5);
    const double p = (x - outline.x) / a;
    const double q = (y - outline.y) / b;
    const double gradient = 2 * std::hypot(p / a, q / b);
    const double value =
        std::fabs(p) > std::fabs(q) ? (p - 1) * (p + 1) + q * q : (q - 1) * (q + 1) + p * p;
    return gradient > 0 ? std::fabs(value / gradient) : HUGE_VAL;
}

// The part of a pixel that a line covers whose middle is so far away.
double covered(double away, const LineStyle &style) {
    const double half = std::max(style.width.value_or(1), 1.0) / 2;
    if (!style.smooth && !style.width)
        return away <= half ? 1 : 0;
    return std::clamp(half + 0.5 - away, 0.0, 1.0);
}

kestu_error_t *draw_within(const Outline &outline, const LineStyle &style, int width, int height,
                           kestu_img_plot_func plot, void *data) {
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (const double part = covered(distance(outline, x, y), style); part > 0)
                if (kestu_error_t *err = plot(x, y, data, part))
                    return err;
    return nullptr;
}

} // namespace

const std::vector<ShapeKind> &shape_kinds() {
    static const std::vector<ShapeKind> all = {
        {"circle",
         "Draw a circle around (X, Y)",
         {{"X", "Column of the middle"}, {"Y", "Row of the middle"}, {"R", "Radius in pixels"}},
         draw_circle,
         outline_of_circle},
        {"ellipse",
         "Draw an ellipse around (X, Y)",
         {{"X", "Column of the middle"},
          {"Y", "Row of the middle"},
          {"A", "Half-axis along x in pixels"},
          {"B", "Half-axis along y in pixels"}},
         draw_ellipse<kestu_img_ellipse, kestu_img_ellipse_aa, kestu_img_ellipse_waa>,
         outline_of_ellipse},
        {"ellipser",
         "Draw the ellipse inscribed in a rectangle",
         {{"X0", "Column of a corner"},
          {"Y0", "Row of a corner"},
          {"X1", "Column of the opposite corner"},
          {"Y1", "Row of the opposite corner"}},
         draw_ellipse<kestu_img_ellipser, kestu_img_ellipser_aa, kestu_img_ellipser_waa>,
         outline_in_rectangle}};
    return all;
}

bool parse_shape(const std::string &words, DrawnShape &out) {
    std::istringstream in(words);
    std::string word;
    in >> word;
    for (const ShapeKind &kind : shape_kinds())
        if (word == kind.name)
            out.kind = &kind;
    if (!out.kind)
        return false;
    for (size_t i = 0; i < out.kind->arguments.size(); ++i) {
        const char *end = word.data();
        if (in >> word)
            end = std::from_chars(word.data(), word.data() + word.size(), out.at[i]).ptr;
        if (!in || end != word.data() + word.size() || !std::isfinite(out.at[i]))
            return false;
    }
    return !(in >> word);
}

// Only wide shapes take any numbers; they round.
std::string fault_of(const DrawnShape &shape, const LineStyle &style) {
    for (size_t i = 0; i < shape.kind->arguments.size(); ++i) {
        const double number = shape.at[i];
        const char *name = shape.kind->arguments[i].name;
        if (!style.width &&
            (number != std::trunc(number) || std::fabs(number) > std::numeric_limits<int>::max()))
            return text("%s: a whole number is expected without --width", name);
        const bool size = *name == 'R' || *name == 'A' || *name == 'B';
        if (size && number < 0)
            return text("%s: a size from 0 on is expected", name);
    }
    return "";
}

kestu_error_t *draw_shape(const DrawnShape &shape, const LineStyle &style, int width, int height,
                          kestu_img_plot_func plot, void *data) {
    const Outline outline = shape.kind->outline(shape.at);
    const double line = style.width.value_or(1);
    const double reach = line / 2 + 2; // beyond the outline nothing is covered
    if (outline.x + outline.a + reach < 0 || outline.x - outline.a - reach > width ||
        outline.y + outline.b + reach < 0 || outline.y - outline.b - reach > height)
        return nullptr;
    if ((outline.a + outline.b + line) * (line + 4) <= largest_walk)
        return shape.kind->draw(shape.at, style, plot, data);
    return draw_within(outline, style, width, height, plot, data);
}

} // namespace program
