// `kestu image ...`
#include "image/commands.hpp"

#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/histogram.hpp"
#include "image/image.hpp"

#include <memory>

namespace program {
namespace {

void info(const std::vector<std::string> &paths, Outcome &outcome) {
    Progress progress("kestu image info", paths.size());
    const char *separator = "";
    for (const std::string &path : paths) {
        Image image;
        if (progress.ok(read_image(path, image), name_of_input(path), outcome)) {
            const std::string page = separator + describe(name_of_input(path), image.record);
            progress.aside([&] { print(page); });
            separator = "\n";
        }
        progress.advance();
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

bool measure(const std::string &path, Image &image, Histogram &counts, double &entropy,
             Outcome &outcome) {
    Progress progress("kestu image histogram", 3);
    if (!progress.ok(read_image(path, image), name_of_input(path), outcome))
        return false;
    progress.advance();
    if (!progress.ok(counts.measure(image.record), name_of_input(path), outcome))
        return false;
    progress.advance();
    return progress.ok(kestu_img_entropy(&image.record, &entropy), name_of_input(path), outcome);
}

void histogram(const HistogramOptions &options, Outcome &outcome) {
    Image image;
    Histogram counts;
    HistogramPlot plot;
    if (!measure(options.path, image, counts, plot.entropy, outcome))
        return;
    plot.levels = counts.levels();
    plot.threshold = counts.threshold();
    plot.logarithmic = options.logarithmic;
    if (!options.svg.empty())
        outcome.ok(write_new_file(options.svg, histogram_svg(plot, name_of_input(options.path))),
                   name_of_output(options.svg));
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
    command->add_option("FILE", *paths, "TIFF files; - is standard input")->required();
    command->callback([paths, &outcome] { info(*paths, outcome); });
}

void add_histogram(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("histogram", "Plot how often each gray level occurs");
    auto options = std::make_shared<HistogramOptions>();
    command->add_option("FILE", options->path, "TIFF file; - is standard input")->required();
    command->add_flag("--csv", options->csv, "Print \"level,count\" lines instead of the plot");
    command
        ->add_option("--svg", options->svg,
                     "Write the plot to this file as a picture; - is standard output")
        ->type_name("FILE");
    command->add_flag("--log", options->logarithmic, "Let the height follow the logarithm");
    command
        ->add_option("--width", options->width,
                     "Columns of the plot, 20 to 1000 [default: the terminal's width]")
        ->type_name("COLUMNS")
        ->check(whole_number(20, 1000));
    command->add_flag("--ascii", options->ascii, "Draw with ASCII characters");
    command->add_flag("--no-color", options->no_colour, "The same as --color never");
    command->callback([options, &outcome] { histogram(*options, outcome); });
}

} // namespace

void add_image_commands(CLI::App &app, Outcome &outcome) {
    CLI::App *image =
        app.add_subcommand("image", "Inspect, measure and make grayscale TIFF images");
    image->require_subcommand(1);
    add_info(*image, outcome);
    add_histogram(*image, outcome);
    add_stats(*image, outcome);
    add_conversions(*image, outcome);
    add_draw(*image, outcome);
}

} // namespace program
