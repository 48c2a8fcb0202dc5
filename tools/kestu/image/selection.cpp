#include "image/selection.hpp"

#include "common/input_file.hpp"
#include "common/text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace program {
namespace {

// Numbers between commas; false when there are not just as many.
bool parse_numbers(const std::string &words, double *numbers, size_t count) {
    const char *at = words.data();
    const char *end = at + words.size();
    for (size_t i = 0; i < count; ++i) {
        if (i > 0 && (at == end || *at++ != ','))
            return false;
        const auto [rest, failure] = std::from_chars(at, end, numbers[i]);
        if (failure != std::errc() || !std::isfinite(numbers[i]))
            return false;
        at = rest;
    }
    return at == end;
}

// The first and last column whose middles an ellipse has in a row; the last below the first for
// none.
std::pair<double, double> columns_of(double x, double y, double a, double b, int row) {
    const double away = (row - y) / b;
    if (!(std::fabs(away) <= 1))
        return {0, -1};
    const double half = a * std::sqrt(1 - away * away);
    return {std::ceil(x - half), std::floor(x + half)};
}

} // namespace

kestu_error_t *parse_rectangle(const std::string &words, const kestu_img_t &form, Rectangle &out) {
    double n[4];
    if (!parse_numbers(words, n, 4) ||
        std::any_of(n, n + 4, [](double x) { return x != std::floor(x) || std::fabs(x) > 1e9; }))
        return in_words("--region: '" + printable(words.c_str()) + "' is not X,Y,W,H in pixels");
    if (n[0] < 0 || n[1] < 0 || n[2] < 1 || n[3] < 1 || n[0] + n[2] > form.width ||
        n[1] + n[3] > form.height)
        return in_words(text("--region: %s does not lie within the %d x %d pixels", words.c_str(),
                             form.width, form.height));
    out = {static_cast<int>(n[0]), static_cast<int>(n[1]), static_cast<int>(n[2]),
           static_cast<int>(n[3])};
    return nullptr;
}

kestu_error_t *Selection::parse_ellipse(const std::string &words) {
    double n[4];
    if (!parse_numbers(words, n, 4) || n[2] <= 0 || n[3] <= 0)
        return in_words("--ellipse: '" + printable(words.c_str()) +
                        "' is not X,Y,A,B: a middle and two half-axes above 0");
    ellipse_ = Ellipse{n[0], n[1], n[2], n[3]};
    return nullptr;
}

kestu_error_t *Selection::read_mask(const std::string &path, const kestu_img_t &form) {
    kestu_error_t *err = with_source(path, 1, [&](Source &source) -> kestu_error_t * {
        if (source.width() != form.width || source.height() != form.height)
            return in_words(text("has %d x %d pixels, and the picture %d x %d", source.width(),
                                 source.height(), form.width, form.height));
        std::vector<uint8_t> row(source.row_bytes());
        const size_t step = static_cast<size_t>(source.bits() / 8);
        const bool white_is_zero = source.form().photometric == 0;
        mask_.reserve(static_cast<size_t>(form.width) * static_cast<size_t>(form.height));
        for (int r = 0; r < form.height; ++r) {
            if (kestu_error_t *failure = source.next(row.data()))
                return failure;
            for (size_t c = 0; c < row.size(); c += step) {
                const unsigned level = step == 1 ? row[c] : row[c] | unsigned{row[c + 1]} << 8;
                mask_.push_back((level != (white_is_zero ? (step == 1 ? 255U : 65535U) : 0)));
            }
        }
        return nullptr;
    });
    const char *why = err ? err->message : nullptr;
    return err ? in_words("--mask " + printable(path.c_str()) + ": " + (why ? why : ""), err)
               : nullptr;
}

kestu_error_t *Selection::open(const Region &region, const kestu_img_t &form) {
    all_ = region.all();
    bounds_ = {0, 0, form.width, form.height};
    inside_.assign(static_cast<size_t>(form.width), 1);
    kestu_error_t *err = nullptr;
    if (!region.rectangle.empty())
        err = parse_rectangle(region.rectangle, form, bounds_);
    if (!err && !region.ellipse.empty())
        err = parse_ellipse(region.ellipse);
    if (!err && !region.mask.empty())
        err = read_mask(region.mask, form);
    return err;
}

void Selection::fill(int y) {
    std::fill(inside_.begin(), inside_.end(), uint8_t{0});
    if (y < bounds_.y || y >= bounds_.y + bounds_.height)
        return;
    double first = bounds_.x;
    double last = bounds_.x + bounds_.width - 1;
    if (ellipse_) {
        const auto [left, right] =
            columns_of(ellipse_->x, ellipse_->y, ellipse_->a, ellipse_->b, y);
        first = std::max(first, left);
        last = std::min(last, right);
    }
    const size_t row = static_cast<size_t>(y) * inside_.size();
    for (double c = first; c <= last; ++c) {
        const auto column = static_cast<size_t>(c);
        inside_[column] = mask_.empty() || mask_[row + column];
    }
}

} // namespace program
