// `kestu image ...`
#include "image/commands.hpp"

#include "common/values.hpp"
#include "image/picture.hpp"
#include "image/selection.hpp"

#include <CLI/CLI.hpp>

namespace program {

void add_page_option(CLI::App &command, uint32_t &page, const char *description) {
    command.add_option("--page", page, description)
        ->type_name("N")
        ->check(whole_number(1, 1 << 30));
}

void add_region_options(CLI::App &command, Region &region) {
    command
        .add_option("--region", region.rectangle, "Only the rectangle with this corner and size")
        ->type_name("X,Y,W,H");
    command
        .add_option("--ellipse", region.ellipse,
                    "Only the ellipse with this middle and these half-axes")
        ->type_name("X,Y,A,B");
    command
        .add_option("--mask", region.mask, "Only where this picture of the same size is not black")
        ->type_name("FILE");
}

void add_force(CLI::App &command, bool &force) {
    command.add_flag("--force", force, "Replace files that are there, the one that is read too");
}

void add_picture_options(CLI::App &command, PictureOptions &options) {
    static const std::vector<std::string> ways = {"none", "deflate"};
    command.add_option("--compress", options.compress, "Compression of TIFF files")
        ->capture_default_str()
        ->type_name(alternatives(ways))
        ->check(one_of(ways));
    command.add_option("--description", options.description, "What the picture says of itself")
        ->type_name("TEXT");
    add_force(command, options.force);
}

void add_image_commands(CLI::App &app, Outcome &outcome) {
    CLI::App *image = app.add_subcommand("image", "Inspect, measure, show and make gray pictures");
    image->require_subcommand(1);
    add_info(*image, outcome);
    add_histogram(*image, outcome);
    add_stats(*image, outcome);
    add_show(*image, outcome);
    add_compare(*image, outcome);
    add_conversions(*image, outcome);
    add_draw(*image, outcome);
}

} // namespace program
