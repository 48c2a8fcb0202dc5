// The iterative intermeans threshold.
#include "kestu_img_measure.h"

namespace {

// The number of pixels in a range of bins and the sum of their levels. Levels are multiplied in
// integers and summed in doubles, in the order of the bins.
struct Moments {
    double level_sum = 0;
    double pixels = 0;

    void add(uint64_t level, uint64_t count) {
        level_sum += static_cast<double>(level * count);
        pixels += static_cast<double>(count);
    }
    double mean() const { return level_sum / pixels; }
};

// The bins from the first to the last that is not empty.
struct Range {
    uint64_t first;
    uint64_t last;
};

Range occupied(const uint64_t *hist, uint64_t last) {
    uint64_t first = 0;
    while (first < last && hist[first] == 0)
        ++first;
    while (last > first && hist[last] == 0)
        --last;
    return {first, last};
}

// Whether all sums over the range are integers that doubles hold exactly, so that they do not
// depend on the order of the additions.
bool sums_are_exact(const uint64_t *hist, Range range) {
    constexpr uint64_t largest = uint64_t{1} << 53;
    uint64_t levels = 0;
    uint64_t pixels = 0;
    for (uint64_t i = range.first; i <= range.last; ++i) {
        uint64_t product = 0;
        if (__builtin_mul_overflow(i, hist[i], &product) || product > largest - levels ||
            hist[i] > largest - pixels)
            return false;
        levels += product;
        pixels += hist[i];
    }
    return true;
}

Moments moments(const uint64_t *hist, uint64_t from, uint64_t to) {
    Moments sums;
    for (uint64_t i = from; i <= to; ++i)
        sums.add(i, hist[i]);
    return sums;
}

// The mean of the bins above a split. Where sums are exact it follows from the sums below, so that
// the bins need not be read again for every split.
class UpperMoments {
  public:
    UpperMoments(const uint64_t *hist, Range range)
        : hist_(hist), last_(range.last), exact_(sums_are_exact(hist, range)),
          all_(exact_ ? moments(hist, range.first, range.last) : Moments{}) {}

    double mean_above(uint64_t split, const Moments &lower) const {
        if (!exact_)
            return moments(hist_, split + 1, last_).mean();
        return (all_.level_sum - lower.level_sum) / (all_.pixels - lower.pixels);
    }

  private:
    const uint64_t *hist_;
    uint64_t last_;
    bool exact_;
    Moments all_;
};

} // namespace

double kestu_img_thres_IJ(int nbins, const uint64_t *hist) {
    const double middle = nbins * 0.5;
    if (nbins < 2)
        return middle;
    const Range range = occupied(hist, static_cast<uint64_t>(nbins) - 1);
    if (range.first >= range.last)
        return middle;
    const UpperMoments upper(hist, range);
    Moments lower;
    double threshold = 0;
    uint64_t split = range.first;
    do {
        lower.add(split, hist[split]);
        threshold = (lower.mean() + upper.mean_above(split, lower)) / 2;
        ++split;
    } while (static_cast<double>(split + 1) <= threshold && split < range.last - 1);
    return threshold;
}
