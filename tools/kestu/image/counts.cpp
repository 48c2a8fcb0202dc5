#include "image/counts.hpp"

#include "common/input_file.hpp"

#include <algorithm>
#include <cmath>

namespace program {
namespace {

constexpr size_t band_bytes = 1 << 20; // of rows that the library counts at once

template <typename Sample>
void count_selected(const uint8_t *row, const std::vector<uint8_t> &inside, Counts &counts) {
    const auto *samples = reinterpret_cast<const Sample *>(row);
    for (size_t c = 0; c < inside.size(); ++c)
        if (inside[c]) {
            ++counts.levels[samples[c]];
            ++counts.pixels;
        }
}

kestu_error_t *measure_selected(Source &source, Selection &selection, Counts &counts) {
    std::vector<uint8_t> row(source.row_bytes());
    for (int y = 0; y < source.height(); ++y) {
        if (kestu_error_t *err = source.next(row.data()))
            return err;
        const std::vector<uint8_t> &inside = selection.row(y);
        if (source.bits() == 8)
            count_selected<uint8_t>(row.data(), inside, counts);
        else
            count_selected<uint16_t>(row.data(), inside, counts);
    }
    return counts.pixels > 0 ? nullptr : in_words("no pixel is selected");
}

// Some rows as an image of their own.
struct Band {
    explicit Band(const Source &source)
        : image(source.form()), row_bytes(source.row_bytes()),
          rows(std::clamp<size_t>(band_bytes / row_bytes, 1, static_cast<size_t>(source.height()))),
          bytes(rows * row_bytes) {
        for (size_t i = 0; i < rows; ++i) {
            rows8.push_back(row(i));
            rows16.push_back(reinterpret_cast<uint16_t *>(row(i)));
        }
        image.data8 = source.bits() == 8 ? rows8.data() : nullptr;
        image.data16 = source.bits() == 16 ? rows16.data() : nullptr;
    }
    uint8_t *row(size_t i) { return bytes.data() + i * row_bytes; }

    kestu_img_t image;
    size_t row_bytes, rows;
    std::vector<uint8_t> bytes;
    std::vector<uint8_t *> rows8;
    std::vector<uint16_t *> rows16;
};

kestu_error_t *measure_all(Source &source, Counts &counts) {
    Band band(source);
    const auto height = static_cast<size_t>(source.height());
    for (size_t first = 0; first < height; first += band.rows) {
        const size_t rows = std::min(band.rows, height - first);
        for (size_t i = 0; i < rows; ++i)
            if (kestu_error_t *err = source.next(band.row(i)))
                return err;
        band.image.height = static_cast<int32_t>(rows);
        Histogram histogram;
        if (kestu_error_t *err = histogram.measure(band.image))
            return err;
        for (size_t level = 0; level < counts.levels.size(); ++level)
            counts.levels[level] += histogram.levels()[level];
    }
    counts.pixels = height * static_cast<size_t>(source.width());
    return nullptr;
}

} // namespace

kestu_error_t *Counts::measure(Source &source, Selection &selection) {
    levels.assign(source.levels(), 0);
    pixels = 0;
    return selection.all() ? measure_all(source, *this)
                           : measure_selected(source, selection, *this);
}

double Counts::entropy() const {
    double sum = 0;
    for (const uint64_t count : levels)
        if (count > 0) {
            const double p = static_cast<double>(count) / static_cast<double>(pixels);
            sum -= p * std::log(p) / 0.6931471805599453;
        }
    return sum;
}

double Counts::threshold() const {
    return kestu_img_thres_IJ(static_cast<int>(levels.size()), levels.data());
}

// The split with the largest variance between its two sides (Otsu, "A threshold selection method
// from gray-level histograms", 1979); the middle of the levels that split equally well.
double Counts::otsu() const {
    const double all = mean() * static_cast<double>(pixels);
    double below = 0, sum = 0, best = -1, first = 0, last = 0;
    for (size_t level = 0; level + 1 < levels.size(); ++level) {
        below += static_cast<double>(levels[level]);
        sum += static_cast<double>(level) * static_cast<double>(levels[level]);
        const double above = static_cast<double>(pixels) - below;
        if (below == 0 || above == 0)
            continue;
        const double apart = sum / below - (all - sum) / above;
        const double variance = below * above * apart * apart;
        if (variance > best) {
            best = variance;
            first = static_cast<double>(level);
        }
        if (variance == best)
            last = static_cast<double>(level);
    }
    return best < 0 ? static_cast<double>(levels.size()) / 2 : (first + last) / 2;
}

double Counts::mean() const {
    double sum = 0;
    for (size_t level = 0; level < levels.size(); ++level)
        sum += static_cast<double>(level) * static_cast<double>(levels[level]);
    return sum / static_cast<double>(pixels);
}

double Counts::deviation() const {
    const double middle = mean();
    double squares = 0;
    for (size_t level = 0; level < levels.size(); ++level) {
        const double away = static_cast<double>(level) - middle;
        squares += away * away * static_cast<double>(levels[level]);
    }
    return std::sqrt(squares / static_cast<double>(pixels));
}

size_t Counts::minimum() const {
    return static_cast<size_t>(
        std::find_if(levels.begin(), levels.end(), [](uint64_t n) { return n > 0; }) -
        levels.begin());
}

size_t Counts::maximum() const {
    return static_cast<size_t>(
        levels.rend() -
        std::find_if(levels.rbegin(), levels.rend(), [](uint64_t n) { return n > 0; }) - 1);
}

size_t Counts::percentile(double percent) const {
    const double rank = std::ceil(percent / 100 * static_cast<double>(pixels));
    double below = 0;
    for (size_t level = 0; level < levels.size(); ++level) {
        below += static_cast<double>(levels[level]);
        if (below >= rank && below > 0)
            return level;
    }
    return levels.size() - 1;
}

double Counts::median() const {
    const size_t lower = percentile(50);
    uint64_t below = 0;
    for (size_t level = 0; level <= lower; ++level)
        below += levels[level];
    if (2 * below != pixels)
        return static_cast<double>(lower);
    size_t upper = lower + 1;
    while (levels[upper] == 0)
        ++upper;
    return static_cast<double>(lower + upper) / 2;
}

} // namespace program
