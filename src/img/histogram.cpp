// Histograms.
#include "kestu_img_measure.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "img/grayscale.hpp"
#include "img/level_counts.hpp"
#include "img/samples.hpp"
#include "img/widen.hpp"
#include "kestu_mem.h"

using namespace kestu;

namespace {

template <typename Count>
void count_levels(const kestu_img_t &img, uint8_t *const *rows, uint64_t *hist) {
    using Counts = LevelCounts<uint8_t, Count>;
    Count counters[Counts::sets * Counts::levels] = {};
    Counts counts(counters);
    count_rows(img, rows, counts);
    for (size_t i = 0; i < Counts::levels; ++i)
        hist[i] = counts.of(i);
}

// Too many counters for the stack: they stand in the histogram itself, and take half of it as long
// as that is enough, for the sake of the cache.
template <typename Count>
void count_levels(const kestu_img_t &img, uint16_t *const *rows, uint64_t *hist) {
    constexpr size_t levels = levels_of<uint16_t>;
    if constexpr (sizeof(Count) == sizeof *hist) {
        LevelCounts<uint16_t, Count> counts(hist);
        count_rows(img, rows, counts);
    } else {
        LevelCounts<uint16_t, Count> counts(narrow_half<Count>(hist, levels));
        count_rows(img, rows, counts);
        widen<Count>(hist, levels);
    }
}

kestu_error_t *make_histogram(const kestu_img_t &img, int *nbins, uint64_t **hist) {
    if (kestu_error_t *err = check_grayscale(img))
        return err;
    return with_samples(img, [&]<typename Sample>(Sample *const *rows) -> kestu_error_t * {
        *nbins = levels_of<Sample>;
        if (kestu_error_t *err = kestu_mem_calloc(levels_of<Sample>, sizeof **hist, hist))
            return err;
        if (needs_wide_counts(img))
            count_levels<uint64_t>(img, rows, *hist);
        else
            count_levels<uint32_t>(img, rows, *hist);
        return nullptr;
    });
}

} // namespace

kestu_error_t *kestu_img_histogram(const kestu_img_t *img, int *nbins, uint64_t **hist) {
    const KeptErrno kept;
    return wrap(make_histogram(*img, nbins, hist), "Cannot create histogram of an image.");
}
