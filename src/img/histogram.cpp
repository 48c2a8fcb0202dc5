#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/level_counts.hpp"
#include "kestu_img_measure.h"
#include "kestu_mem.h"

using namespace kestu;

namespace {

kestu_error_t *make_histogram(const kestu_img_t &img, int *nbins, uint64_t **hist) {
    if (kestu_error_t *err = check_grayscale(img))
        return err;
    *nbins = 1 << img.bits[0];
    const auto bins = static_cast<size_t>(*nbins);
    if (kestu_error_t *err = kestu_mem_calloc(bins, sizeof **hist, hist))
        return err;
    count_levels(img, [&](const auto &counts) {
        for (size_t i = 0; i < bins; ++i)
            (*hist)[i] = counts.of(i);
    });
    return nullptr;
}

} // namespace

kestu_error_t *kestu_img_histogram(const kestu_img_t *img, int *nbins, uint64_t **hist) {
    return wrap(make_histogram(*img, nbins, hist), "Cannot create histogram of an image.");
}
