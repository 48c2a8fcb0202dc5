// `kestu image stats`: what is measured of pictures, a row for each.
#include "common/fitted.hpp"
#include "common/input_file.hpp"
#include "common/json.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "image/batch.hpp"
#include "image/commands.hpp"
#include "image/counts.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>
#include <vector>

namespace program {
namespace {

struct StatsOptions {
    Batch batch;
    Region region;
    std::string percents;
    std::vector<double> percentiles; // of `percents`
    uint32_t page = 1;
    bool json = false, lines = false, csv = false;
    int width = 0;
};

struct Statistics {
    std::string path;
    int width = 0, height = 0, bits = 0;
    size_t minimum = 0, maximum = 0; // gray levels, as all but what follows the thresholds
    double mean = 0, deviation = 0, median = 0, threshold = 0, otsu = 0;
    std::vector<size_t> percentiles;
    double entropy = 0; // bits per pixel
    uint64_t pixels = 0;
    double area = 0; // of them in square millimetres; 0 where no resolution is known
    kestu_error_t *err = nullptr;
};

kestu_error_t *measure(const StatsOptions &options, Source &source, Statistics &s) {
    Selection selection;
    Counts counts;
    kestu_error_t *err = selection.open(options.region, source.form());
    if (err || (err = counts.measure(source, selection)))
        return err;
    s.width = source.width();
    s.height = source.height();
    s.bits = source.bits();
    s.minimum = counts.minimum();
    s.maximum = counts.maximum();
    s.mean = counts.mean();
    s.deviation = counts.deviation();
    s.median = counts.median();
    s.threshold = counts.threshold();
    s.otsu = counts.otsu();
    s.entropy = counts.entropy();
    s.pixels = counts.pixels;
    for (const double percent : options.percentiles)
        s.percentiles.push_back(counts.percentile(percent));
    const kestu_img_t &form = source.form();
    if (form.xres > 0 && form.yres > 0)
        s.area = static_cast<double>(s.pixels) * 25.4 * 25.4 / (form.xres * form.yres);
    return nullptr;
}

using Row = std::vector<std::string>;

// "P5", "P99.9".
std::string percentile_name(double percent) {
    return text("P%.10g", percent);
}

Row row_of(const Statistics &s, bool areas) {
    Row row = {printable(name_of_input(s.path).c_str()),
               text("%d x %d", s.width, s.height),
               text("%d", s.bits),
               text("%zu", s.minimum),
               text("%zu", s.maximum),
               text("%.3f", s.mean),
               text("%.3f", s.deviation),
               text("%.1f", s.median)};
    for (const size_t level : s.percentiles)
        row.push_back(text("%zu", level));
    row.insert(row.end(),
               {text("%.2f", s.threshold), text("%.2f", s.otsu), text("%.4f", s.entropy)});
    if (areas)
        row.push_back(s.area > 0 ? text("%.6g", s.area) : "-");
    return row;
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

std::string table(const std::vector<Statistics> &all, const StatsOptions &options) {
    const bool areas =
        std::any_of(all.begin(), all.end(), [](const Statistics &s) { return s.area > 0; });
    std::vector<Row> rows = {
        {"File", "Size", "Depth", "Minimum", "Maximum", "Mean", "Deviation", "Median"},
        {"", "pixels", "bits", "level", "level", "level", "levels", "level"}};
    for (const double percent : options.percentiles) {
        rows[0].push_back(percentile_name(percent));
        rows[1].emplace_back("level");
    }
    rows[0].insert(rows[0].end(), {"Intermeans", "Otsu", "Entropy"});
    rows[1].insert(rows[1].end(), {"threshold", "threshold", "bits/pixel"});
    if (areas) {
        rows[0].emplace_back("Area");
        rows[1].emplace_back("mm^2");
    }
    for (const Statistics &statistics : all)
        rows.push_back(row_of(statistics, areas));
    return all.empty() ? "" : aligned(rows);
}

Json json_of(const Statistics &s, const StatsOptions &options) {
    Json json = {{"file", s.path},       {"width", s.width},         {"height", s.height},
                 {"bits", s.bits},       {"pixels", s.pixels},       {"minimum", s.minimum},
                 {"maximum", s.maximum}, {"mean", s.mean},           {"deviation", s.deviation},
                 {"median", s.median},   {"threshold", s.threshold}, {"otsu", s.otsu},
                 {"entropy", s.entropy}};
    for (size_t i = 0; i < s.percentiles.size(); ++i)
        json[percentile_name(options.percentiles[i])] = s.percentiles[i];
    if (s.area > 0)
        json["area_mm2"] = s.area;
    return json;
}

std::string quoted(const std::string &name) {
    std::string result = "\"";
    for (const char c : name)
        result += c == '"' ? "\"\"" : std::string(1, c);
    return result + "\"";
}

std::string csv_head(const StatsOptions &options) {
    std::string head = "file,width,height,bits,pixels,minimum,maximum,mean,deviation,median,"
                       "threshold,otsu,entropy,area_mm2";
    for (const double percent : options.percentiles)
        head += "," + percentile_name(percent);
    return head + "\n";
}

std::string csv_line(const Statistics &s) {
    std::string line =
        text("%s,%d,%d,%d,%llu,%zu,%zu,%.17g,%.17g,%.1f,%.17g,%.17g,%.17g,", quoted(s.path).c_str(),
             s.width, s.height, s.bits, static_cast<unsigned long long>(s.pixels), s.minimum,
             s.maximum, s.mean, s.deviation, s.median, s.threshold, s.otsu, s.entropy);
    line += s.area > 0 ? text("%.9g", s.area) : "";
    for (const size_t level : s.percentiles)
        line += text(",%zu", level);
    return line + "\n";
}

// Lines for other programs appear as soon as those of all files before are there.
std::string line_of(const Statistics &s, const StatsOptions &options) {
    return options.lines ? json_line(json_of(s, options)) : options.csv ? csv_line(s) : "";
}

void stats(StatsOptions &options, Outcome &outcome) {
    if (!gather_paths(options.batch, outcome))
        return;
    const auto &paths = options.batch.paths;
    const bool streams = options.lines || options.csv;
    std::vector<Statistics> all;
    {
        Progress progress("kestu image stats", paths.size());
        if (options.csv && !options.lines)
            progress.aside([&] { print(csv_head(options)); });
        in_order<Statistics>(
            paths.size(), options.batch.workers(),
            [&](size_t i) {
                Statistics s;
                s.path = paths[i];
                s.err = with_source(paths[i], options.page,
                                    [&](Source &source) { return measure(options, source, s); });
                return s;
            },
            [&](size_t i, Statistics s) {
                progress.advance();
                if (!progress.ok(s.err, name_of_input(paths[i]), outcome))
                    return;
                if (streams)
                    progress.aside([&] { print(line_of(s, options)); });
                else
                    all.push_back(std::move(s));
            });
    }
    if (streams)
        return;
    if (!options.json)
        return print(fitted(table(all, options), page_width(options.width)));
    Json array = Json::array();
    for (const Statistics &s : all)
        array.push_back(json_of(s, options));
    print(document(array));
}

// "5,50,99.9"
std::string take_percentiles(const std::string &list, std::vector<double> &percents) {
    percents.clear();
    const char *at = list.data();
    const char *end = at + list.size();
    for (bool more = true; more;) {
        double percent = -1;
        const auto [rest, failure] = std::from_chars(at, end, percent);
        if (failure != std::errc() || !(percent >= 0 && percent <= 100))
            return "'" + printable(list.c_str()) + "' is not a list of numbers from 0 to 100";
        percents.push_back(percent);
        more = rest != end && *rest == ',';
        if (!more && rest != end)
            return "'" + printable(list.c_str()) + "' is not a list of numbers from 0 to 100";
        at = rest + 1;
    }
    return "";
}

} // namespace

void add_stats(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("stats", "Measure pictures: a row for each");
    auto options = std::make_shared<StatsOptions>();
    add_batch_options(*command, options->batch);
    add_page_option(*command, options->page, "The page of each file [default: 1]");
    command
        ->add_option("--percentiles", options->percents, "Levels below which so many per cent are")
        ->type_name("LIST")
        ->check(CLI::Validator(
            [options](std::string &list) { return take_percentiles(list, options->percentiles); },
            ""));
    add_region_options(*command, options->region);
    command->add_flag("--json", options->json, "Print a JSON array; files that fail are left out");
    add_page_width(*command, options->width);
    command->add_flag("--json-lines", options->lines,
                      "Print a JSON object a line, as files are done");
    command->add_flag("--csv", options->csv, "Print lines of values between commas");
    command->callback([options, &outcome] { stats(*options, outcome); });
}

} // namespace program
