// `kestu image draw`: circles and ellipses in pictures.
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/commands.hpp"
#include "image/picture.hpp"
#include "image/shape.hpp"
#include "image/source.hpp"

#include <CLI/CLI.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

namespace program {
namespace {

const std::vector<std::string> depths = {"8", "16"};

struct DrawOptions {
    std::array<double, 4> at{}; // what the shape takes, in its order
    std::vector<std::string> also;
    LineStyle style;
    std::string size = "256x256";
    int bits = 8;
    std::optional<int> level;
    std::string on;
    uint32_t page = 1;
    std::string out;
    PictureOptions picture;
};

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

// "100x80"; false for anything else.
bool parse_size(const std::string &words, int &width, int &height) {
    const char *end = words.data() + words.size();
    const auto [x, failure] = std::from_chars(words.data(), end, width);
    if (failure != std::errc() || x == end || *x != 'x')
        return false;
    const auto [rest, second] = std::from_chars(x + 1, end, height);
    const auto fits = [](int n) { return n >= 1 && n <= 65535; };
    return second == std::errc() && rest == end && fits(width) && fits(height);
}

kestu_error_t *open_picture(const DrawOptions &options, Image &image) {
    if (!options.on.empty())
        return read_picture(options.on, options.page, image);
    int width = 0;
    int height = 0;
    parse_size(options.size, width, height);
    return make_black(image.record, width, height, options.bits);
}

void check(const DrawnShape &shape, const LineStyle &style) {
    if (const std::string fault = fault_of(shape, style); !fault.empty())
        throw CLI::ValidationError(shape.kind->name, fault);
}

// The shape of the command and those of --also.
std::vector<DrawnShape> shapes_of(const ShapeKind &kind, const DrawOptions &options) {
    std::vector<DrawnShape> shapes = {{&kind, options.at}};
    for (const std::string &words : options.also) {
        DrawnShape shape;
        if (!parse_shape(words, shape))
            throw CLI::ValidationError("--also", "'" + printable(words.c_str()) +
                                                     "' is not a shape with its numbers, as "
                                                     "\"circle 24 20 15\"");
        shapes.push_back(shape);
    }
    for (const DrawnShape &shape : shapes)
        check(shape, options.style);
    return shapes;
}

void draw(const ShapeKind &kind, const DrawOptions &options, Outcome &outcome) {
    const std::vector<DrawnShape> shapes = shapes_of(kind, options);
    Image image;
    kestu_img_t &record = image.record;
    if (!outcome.ok(check_new(options.out, options.picture.force), name_of_output(options.out)) ||
        !outcome.ok(open_picture(options, image), name_of_input(options.on)))
        return;
    const int largest = record.bits[0] == 8 ? 255 : 65535;
    if (options.level.value_or(0) > largest)
        throw CLI::ValidationError("--level", text("at most %d in this picture", largest));
    Canvas canvas = {record, options.level.value_or(largest)};
    for (const DrawnShape &shape : shapes)
        if (!outcome.ok(draw_shape(shape, options.style, record.width, record.height, Canvas::plot,
                                   &canvas)))
            return;
    outcome.ok(write_picture(options.out, record, options.picture), name_of_output(options.out));
}

void add_shape(CLI::App &draw_command, const ShapeKind &kind, Outcome &outcome) {
    CLI::App *command = draw_command.add_subcommand(kind.name, kind.description);
    auto options = std::make_shared<DrawOptions>();
    for (size_t i = 0; i < kind.arguments.size(); ++i)
        command->add_option(kind.arguments[i].name, options->at[i], kind.arguments[i].description)
            ->required()
            ->check(number());
    command
        ->add_option("OUT", options->out,
                     "The picture to be made: .png or TIFF; - is standard output")
        ->required();
    command
        ->add_option("--also", options->also, "Another shape, as \"circle 24 20 15\"; repeatable")
        ->type_name("SHAPE")
        ->expected(1, 1 << 20);
    CLI::Option *smooth =
        command->add_flag("--aa", options->style.smooth, "Cover the pixels at the edge in part");
    command
        ->add_option("--width", options->style.width, "The same, with a line of this many pixels")
        ->excludes(smooth)
        ->type_name("PIXELS")
        ->check(not_negative_number());
    CLI::Option *size = command->add_option("--size", options->size, "Size of the black picture")
                            ->capture_default_str()
                            ->type_name("WIDTHxHEIGHT")
                            ->check(CLI::Validator(
                                [](std::string &words) {
                                    int width = 0;
                                    int height = 0;
                                    return parse_size(words, width, height)
                                               ? std::string()
                                               : "'" + printable(words.c_str()) +
                                                     "' is not a size from 1x1 to 65535x65535";
                                },
                                ""));
    CLI::Option *bits = command->add_option("--bits", options->bits, "Depth of the black picture")
                            ->capture_default_str()
                            ->type_name(alternatives(depths))
                            ->check(one_of(depths));
    command->add_option("--on", options->on, "Draw on a copy of this picture instead")
        ->type_name("FILE")
        ->excludes(size)
        ->excludes(bits);
    add_page_option(*command, options->page, "The page of that file [default: 1]");
    command
        ->add_option("--level", options->level, "Gray level of the line [default: the largest one]")
        ->type_name("LEVEL")
        ->check(whole_number(0, 65535));
    add_picture_options(*command, options->picture);
    command->callback([&kind, options, &outcome] { draw(kind, *options, outcome); });
}

} // namespace

void add_draw(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("draw", "Draw circles and ellipses into a picture");
    command->require_subcommand(1);
    for (const ShapeKind &kind : shape_kinds())
        add_shape(*command, kind, outcome);
}

} // namespace program
