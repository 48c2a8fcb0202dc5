// Shannon's entropy.
#include "kestu_img_measure.h"

#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/level_counts.hpp"
#include "img/samples.hpp"

#include <cmath>
#include <numbers>

using namespace kestu;

namespace {

// The counters are the one large thing that the library puts on the stack: a caller without memory
// still gets an entropy. In a frame of its own, so that the other types' counters are not there
// too.
template <typename Count, typename Sample>
[[gnu::noinline]] double entropy_of(const kestu_img_t &img, Sample *const *rows) {
    using Counts = LevelCounts<Sample, Count>;
    Count counters[Counts::sets * Counts::levels] = {};
    Counts counts(counters);
    count_rows(img, rows, counts);
    const auto pixels = static_cast<double>(pixels_of(img));
    double sum = 0;
    for (size_t i = 0; i < Counts::levels; ++i)
        if (const uint64_t count = counts.of(i)) {
            const double p = static_cast<double>(count) / pixels;
            sum -= p * std::log(p) / std::numbers::ln2;
        }
    return sum;
}

} // namespace

kestu_error_t *kestu_img_entropy(const kestu_img_t *img, double *entropy) {
    if (kestu_error_t *err = check_grayscale(*img))
        return wrap(err, "Can't calculate entropy for an image.");
    *entropy = with_samples(*img, [img](auto rows) {
        return needs_wide_counts(*img) ? entropy_of<uint64_t>(*img, rows)
                                       : entropy_of<uint32_t>(*img, rows);
    });
    return nullptr;
}
