// `kestu image stats`: what is measured of images, a row for each.
#include "common/input_file.hpp"
#include "common/json.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "image/commands.hpp"
#include "image/image.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace program {
namespace {

struct Statistics {
    std::string path;
    int width = 0, height = 0, bits = 0;
    size_t minimum = 0, maximum = 0; // gray levels, as all but the entropy
    double mean = 0, deviation = 0, threshold = 0;
    double entropy = 0; // bits per pixel
};

// Of an image with one pixel or more; no other is read.
void add_moments(Statistics &statistics, std::span<const uint64_t> levels) {
    double pixels = 0;
    double sum = 0;
    statistics.minimum = levels.size();
    for (size_t level = 0; level < levels.size(); ++level)
        if (levels[level] > 0) {
            statistics.minimum = std::min(statistics.minimum, level);
            statistics.maximum = level;
            pixels += double(levels[level]);
            sum += double(level) * double(levels[level]);
        }
    statistics.mean = sum / pixels;
    double squares = 0;
    for (size_t level = 0; level < levels.size(); ++level) {
        const double away = double(level) - statistics.mean;
        squares += away * away * double(levels[level]);
    }
    statistics.deviation = std::sqrt(squares / pixels);
}

kestu_error_t *measure(Statistics &statistics) {
    Image image;
    if (kestu_error_t *err = read_image(statistics.path, image))
        return err;
    Histogram histogram;
    if (kestu_error_t *err = histogram.measure(image.record))
        return err;
    if (kestu_error_t *err = kestu_img_entropy(&image.record, &statistics.entropy))
        return err;
    statistics.width = image.record.width;
    statistics.height = image.record.height;
    statistics.bits = image.record.bits[0];
    statistics.threshold = histogram.threshold();
    add_moments(statistics, histogram.levels());
    return nullptr;
}

using Row = std::vector<std::string>;

Row row_of(const Statistics &s) {
    return {printable(name_of_input(s.path).c_str()),
            text("%d x %d", s.width, s.height),
            text("%d", s.bits),
            text("%zu", s.minimum),
            text("%zu", s.maximum),
            text("%.3f", s.mean),
            text("%.3f", s.deviation),
            text("%.2f", s.threshold),
            text("%.4f", s.entropy)};
}

// The names stand at the left of their column, numbers at the right.
std::string aligned(const std::vector<Row> &rows) {
    const auto columns_of = [](const std::string &cell) {
        return static_cast<size_t>(
            std::count_if(cell.begin(), cell.end(), [](char c) { return (c & 0xC0) != 0x80; }));
    };
    std::vector<size_t> widths(rows.front().size());
    for (const Row &row : rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], columns_of(row[i]));
    std::string page;
    for (const Row &row : rows) {
        page += row[0] + std::string(widths[0] - columns_of(row[0]), ' ');
        for (size_t i = 1; i < row.size(); ++i)
            page += std::string(widths[i] - columns_of(row[i]) + 2, ' ') + row[i];
        page += '\n';
    }
    return page;
}

std::string table(const std::vector<Statistics> &all) {
    std::vector<Row> rows = {
        {"File", "Size", "Depth", "Minimum", "Maximum", "Mean", "Deviation", "Threshold",
         "Entropy"},
        {"", "pixels", "bits", "level", "level", "level", "levels", "level", "bits/pixel"}};
    for (const Statistics &statistics : all)
        rows.push_back(row_of(statistics));
    return all.empty() ? "" : aligned(rows);
}

Json json_of(const std::vector<Statistics> &all) {
    Json array = Json::array();
    for (const Statistics &s : all)
        array.push_back({{"file", s.path},
                         {"width", s.width},
                         {"height", s.height},
                         {"bits", s.bits},
                         {"minimum", s.minimum},
                         {"maximum", s.maximum},
                         {"mean", s.mean},
                         {"deviation", s.deviation},
                         {"threshold", s.threshold},
                         {"entropy", s.entropy}});
    return array;
}

struct StatsOptions {
    std::vector<std::string> paths;
    bool json = false;
};

void stats(const StatsOptions &options, Outcome &outcome) {
    std::vector<Statistics> all;
    {
        Progress progress("kestu image stats", options.paths.size());
        for (const std::string &path : options.paths) {
            Statistics statistics{.path = path};
            if (progress.ok(measure(statistics), name_of_input(path), outcome))
                all.push_back(statistics);
            progress.advance();
        }
    }
    print(options.json ? document(json_of(all)) : table(all));
}

} // namespace

void add_stats(CLI::App &image, Outcome &outcome) {
    CLI::App *command =
        image.add_subcommand("stats", "Measure TIFF files: a table with a row for each");
    auto options = std::make_shared<StatsOptions>();
    command->add_option("FILE", options->paths, "TIFF files; - is standard input")->required();
    command->add_flag("--json", options->json, "Print a JSON array; files that fail are left out");
    command->callback([options, &outcome] { stats(*options, outcome); });
}

} // namespace program
