// `kestu image draw`: circles and ellipses in pictures.
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/commands.hpp"
#include "image/image.hpp"

#include "kestu_img_shape.h"

#include <array>
#include <cmath>
#include <limits>
#include <memory>

namespace program {
namespace {

const std::vector<std::string> depths = {"8", "16"};

struct DrawOptions {
    std::array<double, 4> at{}; // what the shape takes, in its order
    bool smooth = false;
    std::optional<double> width;
    std::vector<int> size = {256, 256};
    int bits = 8;
    std::optional<int> level;
    std::string on;
    std::string out;
};

kestu_error_t *draw_circle(const DrawOptions &options, kestu_img_plot_func plot, void *data) {
    const auto [x, y, r, unused] = options.at;
    if (options.width)
        return kestu_img_circle_waa(x, y, r, *options.width, plot, data);
    const auto draw = options.smooth ? kestu_img_circle_aa : kestu_img_circle;
    return draw(static_cast<int>(x), static_cast<int>(y), static_cast<int>(r), plot, data);
}

// Both forms of ellipses take four numbers.
template <auto plain, auto smooth, auto wide>
kestu_error_t *draw_ellipse(const DrawOptions &options, kestu_img_plot_func plot, void *data) {
    const auto [p, q, r, s] = options.at;
    if (options.width)
        return wide(p, q, r, s, *options.width, plot, data);
    const auto draw = options.smooth ? smooth : plain;
    return draw(static_cast<int>(p), static_cast<int>(q), static_cast<int>(r), static_cast<int>(s),
                plot, data);
}

struct Argument {
    const char *name;
    const char *description;
};

struct Shape {
    const char *name;
    const char *description;
    std::vector<Argument> arguments;
    kestu_error_t *(*draw)(const DrawOptions &options, kestu_img_plot_func plot, void *data);
};

const std::vector<Shape> &shapes() {
    static const std::vector<Shape> all = {
        {"circle",
         "Draw a circle around (X, Y)",
         {{"X", "Column of the middle"}, {"Y", "Row of the middle"}, {"R", "Radius in pixels"}},
         draw_circle},
        {"ellipse",
         "Draw an ellipse around (X, Y)",
         {{"X", "Column of the middle"},
          {"Y", "Row of the middle"},
          {"A", "Half-axis along x in pixels"},
          {"B", "Half-axis along y in pixels"}},
         draw_ellipse<kestu_img_ellipse, kestu_img_ellipse_aa, kestu_img_ellipse_waa>},
        {"ellipser",
         "Draw the ellipse inscribed in a rectangle",
         {{"X0", "Column of a corner"},
          {"Y0", "Row of a corner"},
          {"X1", "Column of the opposite corner"},
          {"Y1", "Row of the opposite corner"}},
         draw_ellipse<kestu_img_ellipser, kestu_img_ellipser_aa, kestu_img_ellipser_waa>}};
    return all;
}

// A picture that takes a gray level in proportion to the part of a pixel that is covered.
struct Canvas {
    kestu_img_t &image;
    int level;

    static kestu_error_t *plot(int x, int y, void *data, double intensity) {
        const auto &[image, level] = *static_cast<const Canvas *>(data);
        if (x < 0 || y < 0 || x >= image.width || y >= image.height)
            return nullptr;
        if (image.data8)
            blend(image.data8[y][x], level, intensity);
        else
            blend(image.data16[y][x], level, intensity);
        return nullptr;
    }
    template <typename Sample>
    static void blend(Sample &pixel, int level, double part) {
        pixel = static_cast<Sample>(std::lround(pixel + (level - pixel) * part));
    }
};

kestu_error_t *open_picture(const DrawOptions &options, Image &image) {
    if (options.on.empty())
        return make_black(image.record, options.size[0], options.size[1], options.bits);
    double unused = 0;
    if (kestu_error_t *err = read_image(options.on, image))
        return err;
    return kestu_img_entropy(&image.record, &unused); // refuses what is not grayscale
}

void draw(const Shape &shape, const DrawOptions &options, Outcome &outcome) {
    Image image;
    kestu_img_t &record = image.record;
    if (!outcome.ok(open_picture(options, image), name_of_input(options.on)))
        return;
    const int largest = record.bits[0] == 8 ? 255 : 65535;
    if (options.level.value_or(0) > largest)
        throw CLI::ValidationError("--level", text("at most %d in this picture", largest));
    Canvas canvas = {record, options.level.value_or(largest)};
    if (outcome.ok(shape.draw(options, Canvas::plot, &canvas)))
        outcome.ok(write_new_file(
                       options.out,
                       [&](const char *partial) { return kestu_img_write_tiff(partial, &record); }),
                   name_of_output(options.out));
}

// Only wide shapes take any numbers; they round.
void check_numbers(const Shape &shape, const DrawOptions &options) {
    for (size_t i = 0; i < shape.arguments.size() && !options.width; ++i) {
        const double number = options.at[i];
        if (number != std::trunc(number) || std::fabs(number) > std::numeric_limits<int>::max())
            throw CLI::ValidationError(shape.arguments[i].name,
                                       "a whole number is expected without --width");
    }
}

void add_shape(CLI::App &draw_command, const Shape &shape, Outcome &outcome) {
    CLI::App *command = draw_command.add_subcommand(shape.name, shape.description);
    auto options = std::make_shared<DrawOptions>();
    for (size_t i = 0; i < shape.arguments.size(); ++i)
        command->add_option(shape.arguments[i].name, options->at[i], shape.arguments[i].description)
            ->required()
            ->check(number());
    command->add_option("OUT", options->out, "TIFF file to be made; - is standard output")
        ->required();
    CLI::Option *smooth =
        command->add_flag("--aa", options->smooth, "Cover the pixels at the edge in part");
    command->add_option("--width", options->width, "The same, with a line of this many pixels")
        ->excludes(smooth)
        ->type_name("PIXELS")
        ->check(not_negative_number());
    CLI::Option *size = command->add_option("--size", options->size, "Size of the black picture")
                            ->default_str("256 256")
                            ->type_name("WIDTH HEIGHT")
                            ->expected(2)
                            ->check(whole_number(1, 65535));
    CLI::Option *bits = command->add_option("--bits", options->bits, "Depth of the black picture")
                            ->capture_default_str()
                            ->type_name(alternatives(depths))
                            ->check(one_of(depths));
    command->add_option("--on", options->on, "Draw on a copy of this TIFF file instead")
        ->type_name("FILE")
        ->excludes(size)
        ->excludes(bits);
    command
        ->add_option("--level", options->level, "Gray level of the line [default: the largest one]")
        ->type_name("LEVEL")
        ->check(whole_number(0, 65535));
    command->callback([&shape, options, &outcome] {
        check_numbers(shape, *options);
        draw(shape, *options, outcome);
    });
}

} // namespace

void add_draw(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("draw", "Draw a circle or an ellipse into a picture");
    command->require_subcommand(1);
    for (const Shape &shape : shapes())
        add_shape(*command, shape, outcome);
}

} // namespace program
