// `kestu image density`, `fuji` and `mask`: conversions of every pixel, written as pictures.
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/commands.hpp"
#include "image/image.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <vector>

namespace program {
namespace {

struct ConversionOptions {
    std::string path;
    std::string out;
    std::optional<double> saturated; // density
    double resolution = 100;         // relative intensity
    double sensitivity = 4000;
    double latitude = 5;
};

// What the levels of an image become. The conversions go by the level of a pixel alone, so that no
// matrix of doubles is needed.
using Values = std::vector<double>;

// Densities that nothing can be measured of stand for the saturated one; unless it is given, it is
// the density one level beside the end of the scale.
kestu_error_t *to_density(const kestu_img_t &levels, Values &values,
                          const ConversionOptions &options) {
    const double largest = std::log10(levels.bits[0] == 8 ? 255.0 : 65535.0);
    const double saturated = options.saturated.value_or(largest);
    double *row = values.data();
    kestu_error_t *err = kestu_img_calc_density(&levels, &row, saturated);
    if (!err)
        for (double &x : values)
            x = std::isinf(x) ? saturated : x;
    return err;
}

kestu_error_t *to_intensity(const kestu_img_t &levels, Values &values,
                            const ConversionOptions &options) {
    double *row = values.data();
    return kestu_img_calc_fujiri(&levels, &row, options.resolution, options.sensitivity,
                                 options.latitude);
}

kestu_error_t *to_mask(const kestu_img_t &levels, Values &values, const ConversionOptions &) {
    double *row = values.data();
    return kestu_img_data_dmask(&levels, &row);
}

// Puts what `table` has for the level of each pixel into the rows of a picture, which may be those
// of the image.
template <typename Sample, typename Level>
void map_pixels(const kestu_img_t &image, Level *const *from, Sample *const *to,
                const std::vector<Sample> &table) {
    for (int r = 0; r < image.height; ++r)
        for (int c = 0; c < image.width; ++c)
            to[r][c] = table[from[r][c]];
}

template <typename Sample>
void map_pixels(const kestu_img_t &image, Sample *const *to, const std::vector<Sample> &table) {
    if (image.bits[0] == 8)
        map_pixels(image, image.data8, to, table);
    else
        map_pixels(image, image.data16, to, table);
}

// The levels of the picture do not tell what they stand for: a line about it goes to `said`. The
// least value has level 0, and white is zero.
kestu_error_t *write_scaled(Image &image, const Values &values, const ConversionOptions &options,
                            std::string &said) {
    Histogram histogram;
    if (kestu_error_t *err = histogram.measure(image.record))
        return err;
    double minimum = HUGE_VAL;
    double maximum = -HUGE_VAL;
    for (size_t level = 0; level < values.size(); ++level)
        if (histogram.levels()[level] > 0) {
            minimum = std::min(minimum, values[level]);
            maximum = std::max(maximum, values[level]);
        }
    if (!std::isfinite(maximum))
        return in_words("the values are too large for a picture");
    constexpr double largest = 65535;
    std::vector<uint16_t> table(values.size());
    if (minimum < maximum)
        for (size_t level = 0; level < values.size(); ++level)
            if (histogram.levels()[level] > 0)
                table[level] = static_cast<uint16_t>(values[level] == maximum
                                                         ? largest
                                                         : (values[level] - minimum) * largest /
                                                               (maximum - minimum));
    Image made;
    kestu_img_t &picture = image.record.bits[0] == 16 ? image.record : made.record;
    if (&picture == &made.record)
        if (kestu_error_t *err = make_black(picture, image.record.width, image.record.height, 16))
            return err;
    map_pixels(image.record, picture.data16, table);
    picture.photometric = 0;
    said = text("%s: levels 0 to %d stand for %.6g to %.6g\n",
                printable(name_of_output(options.out).c_str()).c_str(),
                minimum < maximum ? 65535 : 0, minimum, maximum);
    return write_new_file(
        options.out, [&](const char *partial) { return kestu_img_write_tiff(partial, &picture); });
}

kestu_error_t *write_mask(Image &image, const Values &values, const ConversionOptions &options,
                          std::string &said) {
    Histogram histogram;
    if (kestu_error_t *err = histogram.measure(image.record))
        return err;
    const auto pixels = static_cast<unsigned long long>(image.record.height) *
                        static_cast<unsigned long long>(image.record.width);
    unsigned long long bright = 0;
    std::vector<uint8_t> table(values.size());
    for (size_t level = 0; level < values.size(); ++level)
        if (values[level] > 0) {
            table[level] = 255;
            bright += histogram.levels()[level];
        }
    Image made;
    kestu_img_t &picture = image.record.bits[0] == 8 ? image.record : made.record;
    if (&picture == &made.record)
        if (kestu_error_t *err = make_black(picture, image.record.width, image.record.height, 8))
            return err;
    map_pixels(image.record, picture.data8, table);
    picture.photometric = 1;
    said = text("%s: %'llu of %'llu pixels are data\n",
                printable(name_of_output(options.out).c_str()).c_str(), bright, pixels);
    return write_new_file(
        options.out, [&](const char *partial) { return kestu_img_write_tiff(partial, &picture); });
}

struct Conversion {
    const char *name;
    const char *description;
    kestu_error_t *(*convert)(const kestu_img_t &levels, Values &values,
                              const ConversionOptions &options);
    kestu_error_t *(*write)(Image &image, const Values &values, const ConversionOptions &options,
                            std::string &said);
};

constexpr Conversion density = {"density", "Write the optical density of each pixel", to_density,
                                write_scaled};
constexpr Conversion fuji = {"fuji", "Write the relative intensity of an imaging-plate scan",
                             to_intensity, write_scaled};
constexpr Conversion mask = {"mask", "Write white for data and black for the dark end of the range",
                             to_mask, write_mask};

// Converts an image of one row that has every level once.
kestu_error_t *convert_levels(const Conversion &conversion, const kestu_img_t &image,
                              const ConversionOptions &options, Values &values) {
    values.resize(image.bits[0] == 8 ? 256 : 65536);
    std::vector<uint8_t> samples8(values.size());
    std::vector<uint16_t> samples16(values.size());
    std::iota(samples8.begin(), samples8.end(), uint8_t{0});
    std::iota(samples16.begin(), samples16.end(), uint16_t{0});
    uint8_t *row8 = samples8.data();
    uint16_t *row16 = samples16.data();
    kestu_img_t levels = image;
    levels.width = static_cast<int32_t>(values.size());
    levels.height = 1;
    levels.data8 = &row8;
    levels.data16 = &row16;
    return conversion.convert(levels, values, options);
}

void run(const Conversion &conversion, const ConversionOptions &options, Outcome &outcome) {
    Progress progress(std::string("kestu image ") + conversion.name, 3);
    Image image;
    Values values;
    if (!progress.ok(read_image(options.path, image), name_of_input(options.path), outcome))
        return;
    progress.advance();
    if (!progress.ok(convert_levels(conversion, image.record, options, values),
                     name_of_input(options.path), outcome))
        return;
    progress.advance();
    std::string said;
    if (progress.ok(conversion.write(image, values, options, said), name_of_output(options.out),
                    outcome))
        progress.aside([&] { print_about(options.out, said); });
}

struct Added {
    CLI::App *command;
    std::shared_ptr<ConversionOptions> options;
};

Added add(CLI::App &image, const Conversion &conversion, Outcome &outcome) {
    CLI::App *command = image.add_subcommand(conversion.name, conversion.description);
    auto options = std::make_shared<ConversionOptions>();
    command->add_option("FILE", options->path, "TIFF file; - is standard input")->required();
    command->add_option("OUT", options->out, "TIFF file to be made; - is standard output")
        ->required();
    command->callback([&conversion, options, &outcome] { run(conversion, *options, outcome); });
    return {command, options};
}

void add_density_options(const Added &added) {
    added.command
        ->add_option("--saturated", added.options->saturated,
                     "Density of pixels at the top level and of infinite ones [default: the "
                     "largest that the depth can show]")
        ->type_name("DENSITY")
        ->check(number());
}

void add_fuji_options(const Added &added) {
    const auto positive = [&](const char *name, double &value, const char *description) {
        added.command->add_option(name, value, description)
            ->capture_default_str()
            ->type_name("NUMBER")
            ->check(positive_number());
    };
    positive("--resolution", added.options->resolution, "Size of a pixel in micrometres");
    positive("--sensitivity", added.options->sensitivity, "Sensitivity of the scan");
    positive("--latitude", added.options->latitude, "Decades that the levels span");
}

} // namespace

void add_conversions(CLI::App &image, Outcome &outcome) {
    add_density_options(add(image, density, outcome));
    add_fuji_options(add(image, fuji, outcome));
    add(image, mask, outcome);
}

} // namespace program
