// Drawing a histogram: in a terminal, as CSV and as SVG.
#pragma once

#include "common/terminal.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace program {

struct HistogramPlot {
    std::span<const uint64_t> levels; // the count of each gray level
    double threshold = 0.0;           // a gray level
    double entropy = 0.0;             // bits per pixel
    bool logarithmic = false;         // heights follow the logarithm of the counts
};

// A plot that fits `look.width` columns.
std::string draw_histogram(const HistogramPlot &plot, const Look &look);

std::string histogram_csv(std::span<const uint64_t> levels);
std::string histogram_svg(const HistogramPlot &plot, const std::string &title);

// The counts gathered into `columns` neighbouring groups of levels as equal as they can be; never
// more columns than levels.
std::vector<uint64_t> gather(std::span<const uint64_t> levels, size_t columns);

// The height of a bar, 0 to 1, beside the largest count.
double bar_height(uint64_t count, uint64_t largest, bool logarithmic);

} // namespace program
