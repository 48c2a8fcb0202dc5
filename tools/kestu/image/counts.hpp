// What is measured of a picture by the counts of its levels.
#pragma once

#include "image/selection.hpp"

#include <cstdint>
#include <span>
#include <vector>

namespace program {

// How often each level occurs in the selected pixels.
struct Counts {
    std::vector<uint64_t> levels; // 256 or 65536
    uint64_t pixels = 0;

    // Reads all rows of a picture once.
    kestu_error_t *measure(Source &source, Selection &selection);

    // Shannon's entropy in bits per pixel; the gray level that the iterative intermeans method sets
    // between dark and bright ones, and the one that Otsu's method does.
    double entropy() const;
    double threshold() const;
    double otsu() const;

    double mean() const;
    double deviation() const;
    size_t minimum() const;
    size_t maximum() const;

    // The level below or at which so many per cent of the pixels are: the smallest one of which
    // this holds (the nearest-rank method).
    size_t percentile(double percent) const;
    // The same for 50, but the middle of two levels between which an even number falls apart.
    double median() const;
};

} // namespace program
