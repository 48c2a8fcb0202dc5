// Drawing a histogram: in a terminal, as CSV and as SVG.
#pragma once

#include "common/terminal.hpp"
#include "image/counts.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace program {

struct HistogramPlot {
    std::string title; // the file
    Counts counts;
    bool logarithmic = false; // heights follow the logarithm of the counts
};

// A plot that fits `look.width` columns.
std::string draw_histogram(const HistogramPlot &plot, const Look &look);

// Lines "level,count", or with the file's name in front; below a head or not.
std::string histogram_csv(const HistogramPlot &plot, bool named, bool headed);

// The plots, one below the other.
std::string histogram_svg(const std::vector<HistogramPlot> &plots);

// The counts gathered into `columns` neighbouring groups of levels as equal as they can be; never
// more columns than levels.
std::vector<uint64_t> gather(std::span<const uint64_t> levels, size_t columns);

// The height of a bar, 0 to 1, beside the largest count.
double bar_height(uint64_t count, uint64_t largest, bool logarithmic);

// "12.3k": a count in at most six characters.
std::string short_count(double count);

// The count that a bar of this height stands for.
double count_at(double height, uint64_t largest, bool logarithmic);

} // namespace program
