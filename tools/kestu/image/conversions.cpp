// `kestu image density`, `fuji` and `mask`: conversions of every pixel, written as pictures.
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "image/commands.hpp"
#include "image/image.hpp"

#include <algorithm>
#include <cmath>
#include <memory>

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

// A double for each pixel of an image.
class Matrix {
  public:
    explicit Matrix(const kestu_img_t &image) : height(image.height), width(image.width) {}
    ~Matrix() {
        if (rows)
            kestu_mem_matrix_free(rows, sizeof **rows, 0, height - 1, 0, width - 1);
    }
    Matrix(const Matrix &) = delete;
    Matrix &operator=(const Matrix &) = delete;

    kestu_error_t *allocate() {
        return kestu_mem_matrix_alloc(&rows, sizeof **rows, 0, height - 1, 0, width - 1);
    }
    template <typename Use>
    void for_each(Use use) {
        for (int r = 0; r < height; ++r)
            for (int c = 0; c < width; ++c)
                use(rows[r][c], r, c);
    }

    const int height, width;
    double **rows = nullptr;
};

// Densities that nothing can be measured of stand for the saturated one; unless it is given, it is
// the density one level beside the end of the scale.
kestu_error_t *to_density(const kestu_img_t &image, Matrix &values,
                          const ConversionOptions &options) {
    const double largest = std::log10(image.bits[0] == 8 ? 255.0 : 65535.0);
    const double saturated = options.saturated.value_or(largest);
    kestu_error_t *err = kestu_img_calc_density(&image, values.rows, saturated);
    if (!err)
        values.for_each([&](double &x, int, int) { x = std::isinf(x) ? saturated : x; });
    return err;
}

kestu_error_t *to_intensity(const kestu_img_t &image, Matrix &values,
                            const ConversionOptions &options) {
    return kestu_img_calc_fujiri(&image, values.rows, options.resolution, options.sensitivity,
                                 options.latitude);
}

kestu_error_t *to_mask(const kestu_img_t &image, Matrix &values, const ConversionOptions &) {
    return kestu_img_data_dmask(&image, values.rows);
}

// The levels of the picture do not tell what they stand for: a line about it goes to `said`.
kestu_error_t *write_scaled(Matrix &values, const ConversionOptions &options, std::string &said) {
    double minimum = HUGE_VAL;
    double maximum = -HUGE_VAL;
    values.for_each([&](double x, int, int) {
        minimum = std::min(minimum, x);
        maximum = std::max(maximum, x);
    });
    if (!std::isfinite(maximum))
        return refusal("The values are too large for a picture.");
    said =
        text("%s: levels 0 to %d stand for %.6g to %.6g\n", printable(options.out.c_str()).c_str(),
             minimum < maximum ? 65535 : 0, minimum, maximum);
    return write_new_file(options.out, [&](const char *partial) {
        return kestu_img_darr_to_tiff(partial, values.rows, values.height, values.width);
    });
}

kestu_error_t *write_mask(Matrix &values, const ConversionOptions &options, std::string &said) {
    Image mask;
    if (kestu_error_t *err = make_black(mask.record, values.width, values.height, 8))
        return err;
    unsigned long long bright = 0;
    values.for_each([&](double x, int r, int c) {
        mask.record.data8[r][c] = x > 0 ? 255 : 0;
        bright += x > 0;
    });
    said =
        text("%s: %'llu of %'llu pixels are data\n", printable(options.out.c_str()).c_str(), bright,
             static_cast<unsigned long long>(values.height) *
                 static_cast<unsigned long long>(values.width));
    return write_new_file(options.out, [&](const char *partial) {
        return kestu_img_write_tiff(partial, &mask.record);
    });
}

struct Conversion {
    const char *name;
    const char *description;
    kestu_error_t *(*convert)(const kestu_img_t &image, Matrix &values,
                              const ConversionOptions &options);
    kestu_error_t *(*write)(Matrix &values, const ConversionOptions &options, std::string &said);
};

constexpr Conversion density = {"density", "Write the optical density of each pixel", to_density,
                                write_scaled};
constexpr Conversion fuji = {"fuji", "Write the relative intensity of an imaging-plate scan",
                             to_intensity, write_scaled};
constexpr Conversion mask = {"mask", "Write white for data and black for the dark end of the range",
                             to_mask, write_mask};

// Memory is asked for when an image without rows is found to be good.
kestu_error_t *check(const Conversion &conversion, kestu_img_t image,
                     const ConversionOptions &options) {
    image.height = 0;
    Matrix none(image);
    return conversion.convert(image, none, options);
}

void run(const Conversion &conversion, const ConversionOptions &options, Outcome &outcome) {
    Progress progress(std::string("kestu image ") + conversion.name, 3);
    Image image;
    const kestu_img_t &record = image.record;
    if (!progress.ok(kestu_img_read(options.path.c_str(), &image.record), options.path, outcome) ||
        !progress.ok(check(conversion, record, options), options.path, outcome))
        return;
    progress.advance();
    Matrix values(record);
    if (!progress.ok(values.allocate(), options.path, outcome) ||
        !progress.ok(conversion.convert(record, values, options), options.path, outcome))
        return;
    progress.advance();
    std::string said;
    if (progress.ok(conversion.write(values, options, said), options.out, outcome))
        progress.aside([&] { print(said); });
}

struct Added {
    CLI::App *command;
    std::shared_ptr<ConversionOptions> options;
};

Added add(CLI::App &image, const Conversion &conversion, Outcome &outcome) {
    CLI::App *command = image.add_subcommand(conversion.name, conversion.description);
    auto options = std::make_shared<ConversionOptions>();
    command->add_option("FILE", options->path, "TIFF file")->required();
    command->add_option("OUT", options->out, "TIFF file to be made")->required();
    command->callback([&conversion, options, &outcome] { run(conversion, *options, outcome); });
    return {command, options};
}

void add_density_options(const Added &added) {
    added.command->add_option("--saturated", added.options->saturated,
                              "Density of pixels at the top level and of infinite ones (the "
                              "largest that the depth can show)");
}

void add_fuji_options(const Added &added) {
    const auto positive = [&](const char *name, double &value, const char *description) {
        added.command->add_option(name, value, description)
            ->capture_default_str()
            ->check(CLI::PositiveNumber);
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
