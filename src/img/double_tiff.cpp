// Matrices of doubles as 16-bit images.
#include "kestu_img.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "img/rows.hpp"
#include "img/tiff_write.hpp"

#include <cmath>

using namespace kestu;

namespace {

constexpr double largest_sample = 65535.0;

struct Range {
    double minimum = 1e300;
    double maximum = -1e300;
};

Range range_of(const double *const *rows, int nrows, int ncols) {
    Range range;
    for (int r = 0; r < nrows; ++r)
        for (int c = 0; c < ncols; ++c) {
            const double x = rows[r][c];
            range.minimum = x < range.minimum ? x : range.minimum;
            range.maximum = x > range.maximum ? x : range.maximum;
        }
    return range;
}

// The largest value does not go through the formula, which could round it down. What is not a
// number has no integer, and enormous values are scaled to infinity, which has none either.
uint16_t sample_of(double x, Range range) {
    if (x == range.maximum)
        return static_cast<uint16_t>(largest_sample);
    const double scaled =
        std::fabs((x - range.minimum) * largest_sample / (range.maximum - range.minimum));
    const double bounded = scaled > largest_sample ? largest_sample : scaled;
    return static_cast<uint16_t>(static_cast<int32_t>(std::isnan(bounded) ? 0.0 : bounded));
}

void scale(const double *const *rows, const kestu_img_t &img) {
    const Range range = range_of(rows, img.height, img.width);
    const bool constant = range.minimum == range.maximum;
    for (int r = 0; r < img.height; ++r)
        for (int c = 0; c < img.width; ++c)
            img.data16[r][c] = constant ? 0 : sample_of(rows[r][c], range);
}

kestu_error_t *write_scaled(OutputFile &file, const double *const *rows, kestu_img_t &img) {
    const uint64_t filled = img.width > 0 ? static_cast<uint32_t>(img.height) : 0;
    if (kestu_error_t *err = allocate_rows(img.data16, img.height, img.width, filled))
        return err;
    scale(rows, img);
    return write_tiff(file, img);
}

} // namespace

kestu_error_t *kestu_img_darr_to_tiff(const char *path, double **rows, int nrows, int ncols) {
    const KeptErrno kept;
    OutputFile file;
    kestu_error_t *err = file.open(path);
    if (!err) {
        kestu_img_t img = {};
        img.height = nrows;
        img.width = ncols;
        img.samples = 1;
        img.bits[0] = 16;
        img.photometric = 0; // Kept: white is zero. Relied on by: readers of these files.
        err = file.close(write_scaled(file, rows, img));
        kestu_img_free(&img);
    }
    return wrap(err, "Cannot convert double array to TIFF image.");
}
