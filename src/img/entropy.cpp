#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/level_counts.hpp"
#include "kestu_img_measure.h"

#include <cmath>
#include <numbers>

using namespace kestu;

kestu_error_t *kestu_img_entropy(const kestu_img_t *img, double *entropy) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Can't calculate entropy for an image.");
    const auto pixels = static_cast<double>(pixels_of(*img));
    double sum = 0;
    count_levels(*img, [&](const auto &counts) {
        for (size_t i = 0; i < counts.levels; ++i)
            if (const uint64_t count = counts.of(i)) {
                const double p = static_cast<double>(count) / pixels;
                sum -= p * std::log(p) / std::numbers::ln2;
            }
    });
    *entropy = sum;
    return nullptr;
}
