// `kestu image histogram`: how often each level occurs.
#include "image/histogram.hpp"

#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/batch.hpp"
#include "image/commands.hpp"
#include "image/picture.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace program {
namespace {

struct HistogramOptions {
    Batch batch;
    Region region;
    std::string svg;
    uint32_t page = 1;
    bool csv = false, logarithmic = false, ascii = false, no_colour = false, force = false;
    int width = 0;
};

struct Measured {
    Counts counts;
    kestu_error_t *err = nullptr;
};

Measured measure(const HistogramOptions &options, const std::string &path) {
    Measured measured;
    measured.err = with_source(path, options.page, [&](Source &source) {
        Selection selection;
        kestu_error_t *err = selection.open(options.region, source.form());
        return err ? err : measured.counts.measure(source, selection);
    });
    return measured;
}

Look look_for(const HistogramOptions &options) {
    Look look = look_of_output();
    look.unicode = look.unicode && !options.ascii;
    look.colour = look.colour && !options.no_colour;
    look.width = options.width > 0 ? options.width : look.width;
    return look;
}

// What standard output gets of a file: one of several begins with its name.
std::string page_of(const HistogramOptions &options, const HistogramPlot &plot, size_t index) {
    const bool several = options.batch.paths.size() > 1;
    if (options.csv)
        return histogram_csv(plot, several, index == 0);
    if (!options.svg.empty())
        return "";
    const std::string head = (index > 0 ? "\n" : "") + printable(plot.title.c_str()) + "\n";
    return (several ? head : "") + draw_histogram(plot, look_for(options));
}

void histogram(HistogramOptions &options, Outcome &outcome) {
    if (!gather_paths(options.batch, outcome))
        return;
    const auto &paths = options.batch.paths;
    std::vector<HistogramPlot> plots;
    Progress progress("kestu image histogram", paths.size());
    size_t shown = 0;
    in_order<Measured>(
        paths.size(), options.batch.workers(), [&](size_t i) { return measure(options, paths[i]); },
        [&](size_t i, Measured measured) {
            progress.advance();
            if (!progress.ok(measured.err, name_of_input(paths[i]), outcome))
                return;
            HistogramPlot plot = {.title = name_of_input(paths[i]),
                                  .counts = std::move(measured.counts),
                                  .logarithmic = options.logarithmic};
            const std::string page = page_of(options, plot, shown++);
            progress.aside([&] { print(page); });
            if (!options.svg.empty())
                plots.push_back(std::move(plot));
        });
    if (options.svg.empty() || plots.empty())
        return;
    kestu_error_t *err = check_new(options.svg, options.force);
    progress.ok(err ? err : write_new_file(options.svg, histogram_svg(plots)),
                name_of_output(options.svg), outcome);
}

} // namespace

void add_histogram(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("histogram", "Plot how often each gray level occurs");
    auto options = std::make_shared<HistogramOptions>();
    add_batch_options(*command, options->batch);
    add_page_option(*command, options->page, "The page of each file [default: 1]");
    add_region_options(*command, options->region);
    command->add_flag("--csv", options->csv, "Print \"level,count\" lines instead of the plot");
    command
        ->add_option("--svg", options->svg,
                     "Write the plots to this file as a picture; - is standard output")
        ->type_name("FILE");
    add_force(*command, options->force);
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

} // namespace program
