// `kestu image ...`
#include "histogram.hpp"
#include "image.hpp"
#include "program.hpp"
#include "terminal.hpp"
#include "text.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace program {
namespace {

void print(const std::string &what) {
    std::fwrite(what.data(), 1, what.size(), stdout);
}

void info(const std::vector<std::string> &paths, Outcome &outcome) {
    const char *separator = "";
    for (const std::string &path : paths) {
        Image image;
        if (!outcome.ok(kestu_img_read(path.c_str(), &image.record), printable(path.c_str())))
            continue;
        print(separator + describe(path, image.record));
        separator = "\n";
    }
}

struct HistogramOptions {
    std::string path;
    std::string svg;
    bool csv = false;
    bool logarithmic = false;
    bool ascii = false;
    bool no_colour = false;
    int width = 0;
};

void write_file(const std::string &path, const std::string &content, Outcome &outcome) {
    FILE *file = std::fopen(path.c_str(), "w");
    bool written = file && std::fwrite(content.data(), 1, content.size(), file) == content.size();
    if (file && std::fclose(file) != 0)
        written = false;
    if (!written)
        outcome.fail(printable(path.c_str()) + ": cannot be written: " + std::strerror(errno));
}

void histogram(const HistogramOptions &options, Outcome &outcome) {
    Image image;
    Histogram counts;
    HistogramPlot plot;
    if (!outcome.ok(kestu_img_read(options.path.c_str(), &image.record), options.path) ||
        !outcome.ok(counts.measure(image.record), options.path) ||
        !outcome.ok(kestu_img_entropy(&image.record, &plot.entropy), options.path))
        return;
    plot.levels = counts.levels();
    plot.threshold = counts.threshold();
    plot.logarithmic = options.logarithmic;
    if (!options.svg.empty())
        write_file(options.svg, histogram_svg(plot, options.path), outcome);
    if (options.csv)
        return print(histogram_csv(plot.levels));
    if (!options.svg.empty())
        return;
    Look look = look_of_output();
    look.unicode = look.unicode && !options.ascii;
    look.colour = look.colour && !options.no_colour;
    look.width = options.width > 0 ? options.width : look.width;
    print(draw_histogram(plot, look));
}

void add_info(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("info", "Describe TIFF files, field by field");
    auto paths = std::make_shared<std::vector<std::string>>();
    command->add_option("FILE", *paths, "TIFF files")->required();
    command->callback([paths, &outcome] { info(*paths, outcome); });
}

void add_histogram(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("histogram", "Plot how often each gray level occurs");
    auto options = std::make_shared<HistogramOptions>();
    command->add_option("FILE", options->path, "TIFF file")->required();
    command->add_flag("--csv", options->csv, "Print \"level,count\" lines instead of the plot");
    command->add_option("--svg", options->svg, "Write the plot to this file as a picture");
    command->add_flag("--log", options->logarithmic, "Let the height follow the logarithm");
    command->add_option("--width", options->width, "Columns of the plot (the terminal's width)")
        ->check(CLI::Range(20, 1000));
    command->add_flag("--ascii", options->ascii, "Draw with ASCII characters");
    command->add_flag("--no-color", options->no_colour, "Draw without colour");
    command->callback([options, &outcome] { histogram(*options, outcome); });
}

} // namespace

void add_image_commands(CLI::App &app, Outcome &outcome) {
    CLI::App *image = app.add_subcommand("image", "Inspect grayscale TIFF images");
    image->require_subcommand(1);
    add_info(*image, outcome);
    add_histogram(*image, outcome);
}

} // namespace program
