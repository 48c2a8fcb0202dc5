// The histogram in a terminal.
#include "image/histogram.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace program {
namespace {

constexpr int rows = 16;
constexpr int margin = 9; // for the counts at the left, the axis included

constexpr const char *eighths[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr const char *halves[] = {" ", "_", ":", "#"}; // for terminals without Unicode
constexpr const char *below_colour = "\033[34m";       // levels up to the threshold
constexpr const char *above_colour = "\033[33m";
constexpr const char *plain = "\033[0m";

// What stands in row `row` (0 at the bottom) of a bar that is `height` rows high.
const char *cell(double height, int row, bool unicode) {
    const double part = std::clamp(height - row, 0.0, 1.0);
    const bool visible = height > 0.0 && row == 0; // a bar that is not empty is seen
    if (unicode) {
        const long step = std::lround(part * 8.0);
        return eighths[visible ? std::max(step, 1L) : step];
    }
    const long step = std::lround(part * 3.0);
    return halves[visible ? std::max(step, 1L) : step];
}

// The axis under the bars, and under it the levels at both ends and the mark of the threshold.
std::string axis(size_t columns, size_t mark, const HistogramPlot &plot, const Look &look) {
    std::string line(margin - 1, ' ');
    line += look.unicode ? "└" : "+";
    for (size_t i = 0; i < columns; ++i)
        line += look.unicode ? (i == mark ? "┴" : "─") : (i == mark ? "^" : "-");
    const std::string last = text("%zu", plot.counts.levels.size() - 1);
    std::string labels(columns, ' ');
    labels[0] = '0';
    const std::string threshold = text("%.1f", plot.counts.threshold());
    const size_t last_at = columns > last.size() ? columns - last.size() : 0;
    labels.replace(last_at, last.size(), last);
    const size_t at = std::min(mark, columns - std::min(columns, threshold.size()));
    if (at >= 2 && at + threshold.size() + 1 <= last_at)
        labels.replace(at, threshold.size(), threshold);
    return line + "\n" + std::string(margin, ' ') + labels + "\n";
}

std::string row_label(int row, uint64_t largest, bool logarithmic) {
    if (row % 5 != 0)
        return std::string(margin - 2, ' ');
    const double count = count_at(double(row) / (rows - 1), largest, logarithmic);
    return text("%*s", margin - 2, short_count(count).c_str());
}

std::string draw_row(int row, const std::vector<uint64_t> &bars, uint64_t largest, size_t mark,
                     const HistogramPlot &plot, const Look &look) {
    std::string line = row_label(row, largest, plot.logarithmic);
    line += look.unicode ? " │" : " |";
    const char *colour = nullptr;
    for (size_t i = 0; i < bars.size(); ++i) {
        const char *wanted = i <= mark ? below_colour : above_colour;
        if (look.colour && wanted != colour)
            line += colour = wanted;
        line += cell(bar_height(bars[i], largest, plot.logarithmic) * rows, row, look.unicode);
    }
    if (look.colour)
        line += plain;
    else
        line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

} // namespace

std::vector<uint64_t> gather(std::span<const uint64_t> levels, size_t columns) {
    columns = std::min(columns, levels.size());
    std::vector<uint64_t> sums(columns, 0);
    for (size_t level = 0; level < levels.size(); ++level)
        sums[level * columns / levels.size()] += levels[level];
    return sums;
}

double bar_height(uint64_t count, uint64_t largest, bool logarithmic) {
    if (largest == 0)
        return 0.0;
    return logarithmic ? std::log1p(double(count)) / std::log1p(double(largest))
                       : double(count) / double(largest);
}

std::string draw_histogram(const HistogramPlot &plot, const Look &look) {
    const size_t columns = static_cast<size_t>(std::max(look.width - margin - 1, 10));
    const std::vector<uint64_t> bars = gather(plot.counts.levels, columns);
    const uint64_t largest = *std::max_element(bars.begin(), bars.end());
    const double position =
        plot.counts.threshold() / double(plot.counts.levels.size()) * double(bars.size());
    const size_t mark = std::min(static_cast<size_t>(std::max(position, 0.0)), bars.size() - 1);
    std::string page;
    for (int row = rows - 1; row >= 0; --row)
        page += draw_row(row, bars, largest, mark, plot, look);
    page += axis(bars.size(), mark, plot, look);
    page += text("Entropy %.4f bits per pixel, threshold %.2f (intermeans), %.2f (Otsu)\n",
                 plot.counts.entropy(), plot.counts.threshold(), plot.counts.otsu());
    return page;
}

std::string short_count(double count) {
    constexpr const char *units[] = {"", "k", "M", "G", "T", "P", "E"};
    const char *const *unit = units;
    while (count >= 999.5 && unit + 1 != std::end(units)) {
        count /= 1000.0;
        ++unit;
    }
    return text(count < 99.95 && unit != units ? "%.1f%s" : "%.0f%s", count, *unit);
}

double count_at(double height, uint64_t largest, bool logarithmic) {
    return logarithmic ? std::expm1(std::log1p(double(largest)) * height)
                       : double(largest) * height;
}

std::string histogram_csv(const HistogramPlot &plot, bool named, bool headed) {
    std::string name;
    for (const char c : plot.title)
        name += c == '"' ? "\"\"" : std::string(1, c);
    const std::string front = named ? "\"" + name + "\"," : "";
    std::string csv = headed ? (named ? "file,level,count\n" : "level,count\n") : "";
    for (size_t level = 0; level < plot.counts.levels.size(); ++level)
        csv += front + text("%zu,%llu\n", level,
                            static_cast<unsigned long long>(plot.counts.levels[level]));
    return csv;
}

} // namespace program
