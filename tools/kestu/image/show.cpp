// `kestu image show`: a picture in the terminal.
#include "common/input_file.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/commands.hpp"
#include "image/counts.hpp"
#include "image/thumbnail.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <memory>

namespace program {
namespace {

const std::vector<std::string> displays = {"auto",      "kitty", "sixel", "truecolor",
                                           "256colors", "gray",  "ascii"};

struct ShowOptions {
    std::string path, levels, as = "auto";
    Region region; // of which only the rectangle is used to cut
    uint32_t page = 1;
    int width = 0, height = 0;
};

Display display_for(const ShowOptions &options) {
    constexpr Display named[] = {Display::kitty,   Display::sixel, Display::true_colour,
                                 Display::colours, Display::gray,  Display::ascii};
    for (size_t i = 1; i < displays.size(); ++i)
        if (options.as == displays[i])
            return named[i - 1];
    return display_of_output(look_of_output().unicode);
}

// All but the darkest and the brightest half per cent of the pixels have different grays.
kestu_error_t *choose_contrast(const ShowOptions &options, Source &source, Contrast &contrast) {
    if (!options.levels.empty()) {
        const char *end = options.levels.data() + options.levels.size();
        const auto low = std::from_chars(options.levels.data(), end, contrast.low);
        if (low.ec == std::errc() && low.ptr != end && *low.ptr == ',') {
            const auto high = std::from_chars(low.ptr + 1, end, contrast.high);
            if (high.ec == std::errc() && high.ptr == end && contrast.low < contrast.high)
                return nullptr;
        }
        return in_words("--levels: '" + printable(options.levels.c_str()) +
                        "' is not LOW,HIGH, the first below the second");
    }
    Selection selection;
    Counts counts;
    kestu_error_t *err = selection.open(options.region, source.form());
    if (err || (err = counts.measure(source, selection)))
        return err;
    contrast.low = static_cast<double>(counts.percentile(0.5));
    contrast.high = static_cast<double>(counts.percentile(99.5));
    if (contrast.low == contrast.high) {
        contrast.low = static_cast<double>(counts.minimum());
        contrast.high = static_cast<double>(counts.maximum());
    }
    return nullptr;
}

kestu_error_t *show_source(const ShowOptions &options, Source &source) {
    Contrast contrast;
    Rectangle part = {0, 0, source.width(), source.height()};
    kestu_error_t *err = nullptr;
    if (!options.region.rectangle.empty())
        err = parse_rectangle(options.region.rectangle, source.form(), part);
    if (err || (err = choose_contrast(options, source, contrast)))
        return err;
    const Display display = display_for(options);
    const Screen screen = screen_of_output();
    const int columns = options.width > 0 ? options.width : screen.columns;
    const int rows = options.height > 0 ? options.height : std::max(screen.rows - 2, 1);
    const bool pixels = display == Display::kitty || display == Display::sixel;
    const int wide = pixels ? screen.cell_width : 1;
    const int high = pixels ? screen.cell_height : 2;
    Thumbnail picture;
    if ((err = make_thumbnail(source, part, contrast, columns * wide, rows * high, picture)))
        return err;
    if (display == Display::kitty)
        print(
            kitty(picture, (picture.width + wide - 1) / wide, (picture.height + high - 1) / high));
    else if (display == Display::sixel)
        print(sixels(picture));
    else
        print(display == Display::ascii ? ascii_art(picture) : blocks(picture, display));
    print(text("%d x %d pixels, levels %g to %g\n", part.width, part.height, contrast.low,
               contrast.high));
    return nullptr;
}

} // namespace

void add_show(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("show", "Show a picture in the terminal");
    auto options = std::make_shared<ShowOptions>();
    command->add_option("FILE", options->path, "A picture: TIFF or PNG; - is standard input")
        ->required();
    add_page_option(*command, options->page, "The page of the file [default: 1]");
    add_region_options(*command, options->region);
    command->remove_option(command->get_option("--ellipse"));
    command->remove_option(command->get_option("--mask"));
    command
        ->add_option("--levels", options->levels,
                     "The levels that are black and white [default: automatic]")
        ->type_name("LOW,HIGH");
    command->add_option("--as", options->as, "How; auto: as the terminal can")
        ->capture_default_str()
        ->type_name(alternatives(displays))
        ->check(one_of(displays));
    command->add_option("--width", options->width, "Columns [default: those of the terminal]")
        ->type_name("COLUMNS")
        ->check(whole_number(1, 1000));
    command->add_option("--height", options->height, "Lines [default: those of the terminal]")
        ->type_name("LINES")
        ->check(whole_number(1, 1000));
    command->callback([options, &outcome] {
        outcome.ok(with_source(options->path, options->page,
                               [&](Source &source) { return show_source(*options, source); }),
                   name_of_input(options->path));
    });
}

} // namespace program
