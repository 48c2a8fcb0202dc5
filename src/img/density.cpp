// Conversions of every pixel by a function of its sample alone.
#include "kestu_img_measure.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/samples.hpp"

#include <cmath>
#include <limits>

using namespace kestu;

namespace {

template <typename Sample, typename Convert>
void convert_rows(const kestu_img_t &img, Sample *const *rows, double *const *out, int32_t first,
                  int32_t end, Convert convert) {
    for (int32_t r = first; r < end; ++r)
        for (int32_t c = 0; c < img.width; ++c)
            out[r][c] = convert(rows[r][c]);
}

template <typename Sample, typename Convert>
void convert_each(const kestu_img_t &img, Sample *const *rows, double *const *out,
                  Convert convert) {
    convert_rows(img, rows, out, 0, img.height, convert);
}

// Converts every level once, where there are more pixels than levels.
template <typename Convert>
void convert_costly(const kestu_img_t &img, uint8_t *const *rows, double *const *out,
                    Convert convert) {
    if (pixels_of(img) < levels_of<uint8_t>)
        return convert_each(img, rows, out, convert);
    double table[levels_of<uint8_t>];
    for (size_t q = 0; q < levels_of<uint8_t>; ++q)
        table[q] = convert(static_cast<uint8_t>(q));
    convert_each(img, rows, out, [&](uint8_t q) { return table[q]; });
}

// A table of 16-bit levels is too large for the stack, and no memory is asked for. It stands, in
// pieces, in the last rows of the caller's matrix until these are converted themselves.
template <typename Convert>
void convert_costly(const kestu_img_t &img, uint16_t *const *rows, double *const *out,
                    Convert convert) {
    constexpr int32_t piece = 64;
    constexpr int32_t pieces = levels_of<uint16_t> / piece;
    const int32_t in_a_row = img.width / piece;
    const int32_t table_rows = in_a_row > 0 ? (pieces + in_a_row - 1) / in_a_row : pieces;
    if (in_a_row == 0 || img.height / 2 < table_rows)
        return convert_each(img, rows, out, convert);
    const int32_t end = img.height - table_rows;
    double *table[pieces];
    for (int32_t i = 0; i < pieces; ++i) {
        table[i] = out[end + i / in_a_row] + i % in_a_row * piece;
        for (int32_t k = 0; k < piece; ++k)
            table[i][k] = convert(static_cast<uint16_t>(i * piece + k));
    }
    convert_rows(img, rows, out, 0, end, [&](uint16_t q) { return table[q / piece][q % piece]; });
    convert_rows(img, rows, out, end, img.height, convert);
}

// The largest sample, which is white or black by the photometric interpretation.
double full_scale(const kestu_img_t &img) {
    return with_samples(img, []<typename Sample>(Sample **) -> double {
        return std::numeric_limits<Sample>::max();
    });
}

bool white_is_zero(const kestu_img_t &img) {
    return img.photometric == 0;
}

template <typename Convert>
void convert_image(const kestu_img_t &img, double *const *out, Convert convert) {
    with_samples(img, [&](auto rows) { convert_costly(img, rows, out, convert); });
}

} // namespace

kestu_error_t *kestu_img_data_dmask(const kestu_img_t *img, double **out) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Cannot provide image data mask.");
    const int dark = white_is_zero(*img) ? static_cast<int>(full_scale(*img)) : 0;
    with_samples(*img, [&](auto rows) {
        convert_each(*img, rows, out, [dark](int q) { return q == dark ? 0.0 : 1.0; });
    });
    return nullptr;
}

// Kept: white is saturated where black is zero, not 0. Relied on by: searches for saturated pixels.
kestu_error_t *kestu_img_calc_density(const kestu_img_t *img, double **out, double saturated) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Can't calculate optical intensity.");
    const double full = full_scale(*img);
    const bool inverted = white_is_zero(*img);
    convert_image(*img, out, [=](double q) {
        return q == full ? saturated : std::log10(full / (inverted ? full - q : q));
    });
    return nullptr;
}

kestu_error_t *kestu_img_calc_fujiri(const kestu_img_t *img, double **out, double resolution,
                                     double sensitivity, double latitude) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Can't calculate Fuji relative intensity.");
    const double factor = resolution * resolution / 10000 * (4000 / sensitivity);
    const double full = full_scale(*img);
    const bool inverted = white_is_zero(*img);
    const KeptErrno kept; // powers beyond a double's range change it
    convert_image(*img, out, [=](double q) {
        const double level = (inverted ? q : full - q) / full;
        return std::pow(10.0, (level - 0.5) * latitude) * factor;
    });
    return nullptr;
}
