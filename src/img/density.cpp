// Conversions of every pixel by a function of its sample alone.
#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/rows.hpp"
#include "kestu_img_measure.h"

#include <cmath>

using namespace kestu;

namespace {

template <typename Sample, typename Convert>
void convert_each(const kestu_img_t &img, Sample *const *rows, double *const *out,
                  Convert convert) {
    for (int32_t r = 0; r < img.height; ++r)
        for (int32_t c = 0; c < img.width; ++c)
            out[r][c] = convert(rows[r][c]);
}

// Converts every level once. In a frame of its own for its table of 512 KiB.
template <typename Sample, typename Convert>
[[gnu::noinline]] void convert_by_table(const kestu_img_t &img, Sample *const *rows,
                                        double *const *out, Convert convert) {
    double table[levels_of<Sample>];
    for (size_t q = 0; q < levels_of<Sample>; ++q)
        table[q] = convert(static_cast<Sample>(q));
    convert_each(img, rows, out, [&](Sample q) { return table[q]; });
}

template <typename Sample, typename Convert>
void convert_costly(const kestu_img_t &img, Sample *const *rows, double *const *out,
                    Convert convert) {
    if (pixels_of(img) < levels_of<Sample>)
        convert_each(img, rows, out, convert);
    else
        convert_by_table(img, rows, out, convert);
}

// The largest sample, which is white or black by the photometric interpretation.
double full_scale(const kestu_img_t &img) {
    return img.bits[0] == 8 ? 255.0 : 65535.0;
}

bool white_is_zero(const kestu_img_t &img) {
    return img.photometric == 0;
}

void mask(const kestu_img_t &img, double *const *out) {
    const int dark = white_is_zero(img) ? static_cast<int>(full_scale(img)) : 0;
    const auto is_bright = [dark](int q) { return q == dark ? 0.0 : 1.0; };
    if (img.bits[0] == 8)
        convert_each(img, img.data8, out, is_bright);
    else
        convert_each(img, img.data16, out, is_bright);
}

template <typename Convert>
void convert_costly(const kestu_img_t &img, double *const *out, Convert convert) {
    if (img.bits[0] == 8)
        convert_costly(img, img.data8, out, convert);
    else
        convert_costly(img, img.data16, out, convert);
}

} // namespace

kestu_error_t *kestu_img_data_dmask(const kestu_img_t *img, double **out) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Cannot provide image data mask.");
    mask(*img, out);
    return nullptr;
}

// White of a black-is-zero image is saturated too, rather than 0: kept for those who rely on it.
kestu_error_t *kestu_img_calc_density(const kestu_img_t *img, double **out, double saturated) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Can't calculate optical intensity.");
    const double full = full_scale(*img);
    const bool inverted = white_is_zero(*img);
    convert_costly(*img, out, [=](double q) {
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
    convert_costly(*img, out, [=](double q) {
        const double level = (inverted ? q : full - q) / full;
        return std::pow(10.0, (level - 0.5) * latitude) * factor;
    });
    return nullptr;
}
