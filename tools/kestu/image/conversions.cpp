// `kestu image density`, `fuji`, `mask` and `convert`: pictures made of others, row by row.
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/batch.hpp"
#include "image/commands.hpp"
#include "image/counts.hpp"
#include "image/picture.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numeric>
#include <vector>

namespace program {
namespace {

struct ConversionOptions {
    Batch batch;        // FILE... and OUT, unless a folder is named
    std::string folder; // --to
    bool png = false;   // there
    PictureOptions picture;
    uint32_t page = 1;
    bool invert = false;
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

kestu_error_t *to_levels(const kestu_img_t &, Values &values, const ConversionOptions &) {
    std::iota(values.begin(), values.end(), 0.0);
    return nullptr;
}

// A level for each level, and what is said of the picture that is made.
struct Made {
    std::vector<uint16_t> table;
    int bits = 16, photometric = 0;
    std::string said;
};

struct Conversion {
    const char *name;
    const char *quantity; // what the levels of the picture stand for
    const char *description;
    const char *footer;
    kestu_error_t *(*convert)(const kestu_img_t &levels, Values &values,
                              const ConversionOptions &options);
    kestu_error_t *(*make)(const Conversion &conversion, const Values &values, const Counts &counts,
                           const kestu_img_t &form, Made &made);
};

const char *ends_of(const kestu_img_t &form) {
    return form.photometric == 0 ? "white is zero" : "black is zero";
}

// The least value has level 0, and white is zero.
kestu_error_t *make_scaled(const Conversion &conversion, const Values &values, const Counts &counts,
                           const kestu_img_t &form, Made &made) {
    double minimum = HUGE_VAL;
    double maximum = -HUGE_VAL;
    for (size_t level = 0; level < values.size(); ++level)
        if (counts.levels[level] > 0) {
            minimum = std::min(minimum, values[level]);
            maximum = std::max(maximum, values[level]);
        }
    if (!std::isfinite(maximum))
        return in_words("the values are too large for a picture");
    constexpr double largest = 65535;
    const bool flat = !(minimum < maximum);
    made.table.assign(values.size(), 0);
    for (size_t level = 0; !flat && level < values.size(); ++level)
        if (counts.levels[level] > 0)
            made.table[level] =
                static_cast<uint16_t>(values[level] == maximum ? largest
                                                               : (values[level] - minimum) *
                                                                     largest / (maximum - minimum));
    made.said = text("levels 0 to %d stand for %s %.6g to %.6g (the file: %s)", flat ? 0 : 65535,
                     conversion.quantity, minimum, maximum, ends_of(form));
    return nullptr;
}

kestu_error_t *make_mask(const Conversion &, const Values &values, const Counts &counts,
                         const kestu_img_t &form, Made &made) {
    unsigned long long bright = 0;
    made.bits = 8;
    made.photometric = 1;
    made.table.assign(values.size(), 0);
    for (size_t level = 0; level < values.size(); ++level)
        if (values[level] > 0) {
            made.table[level] = 255;
            bright += counts.levels[level];
        }
    made.said = text("%'llu of %'llu pixels are data (the file: %s)", bright,
                     static_cast<unsigned long long>(counts.pixels), ends_of(form));
    return nullptr;
}

kestu_error_t *make_same(const Conversion &, const Values &values, const Counts &,
                         const kestu_img_t &form, Made &made) {
    made.bits = form.bits[0];
    made.photometric = form.photometric;
    made.table.resize(values.size());
    std::iota(made.table.begin(), made.table.end(), uint16_t{0});
    return nullptr;
}

constexpr const char *ends_footer =
    "Where white is zero, level 0 is white, and M, the largest level, is the dark end; where black "
    "is zero, 0 is the dark end. The file tells which one it is; --invert takes it for the other.";

constexpr Conversion conversions[] = {
    {"density", "densities", "Write the optical density of each pixel",
     "The density of level q is log10(M / (M - q)) where white is zero, and log10(M / q) where "
     "black is zero. Level M is saturated in both, and so is what would be infinite.",
     to_density, make_scaled},
    {"fuji", "relative intensities", "Write the relative intensity of an imaging-plate scan",
     "The intensity of level q is 10^((v - 1/2) x latitude) x resolution^2 / 10000 x 4000 / "
     "sensitivity, in which v is q / M where white is zero, and (M - q) / M where black is zero.",
     to_intensity, make_scaled},
    {"mask", "", "Write white for data and black for the dark end of the range",
     "All levels but that of the dark end are data.", to_mask, make_mask},
    {"convert", "", "Write the picture anew, as TIFF or PNG",
     "The levels stay what they are; --invert exchanges black and white.", to_levels, make_same}};

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

// Puts what the table has for the level of each pixel into another row.
template <typename Level, typename Sample>
void map_row(const std::vector<uint8_t> &from, std::vector<uint8_t> &to,
             const std::vector<uint16_t> &table) {
    const auto *levels = reinterpret_cast<const Level *>(from.data());
    auto *samples = reinterpret_cast<Sample *>(to.data());
    for (size_t c = 0; c < from.size() / sizeof(Level); ++c)
        samples[c] = static_cast<Sample>(table[levels[c]]);
}

// What one picture has come to.
struct Converted {
    std::string out, said;
    bool reading = true; // what was tried last
    kestu_error_t *err = nullptr;
};

kestu_error_t *put_rows(Source &source, const Made &made, PictureWriter &writer, bool &reading) {
    std::vector<uint8_t> from(source.row_bytes());
    std::vector<uint8_t> to(static_cast<size_t>(source.width()) *
                            static_cast<size_t>(made.bits / 8));
    const auto map =
        source.bits() == 8
            ? (made.bits == 8 ? map_row<uint8_t, uint8_t> : map_row<uint8_t, uint16_t>)
            : (made.bits == 8 ? map_row<uint16_t, uint8_t> : map_row<uint16_t, uint16_t>);
    for (int r = 0; r < source.height(); ++r) {
        reading = true;
        if (kestu_error_t *err = source.next(from.data()))
            return err;
        reading = false;
        map(from, to, made.table);
        if (kestu_error_t *err = writer.put(to.data()))
            return err;
    }
    return nullptr;
}

kestu_error_t *convert(const Conversion &conversion, const ConversionOptions &options,
                       Source &source, Converted &done) {
    kestu_img_t form = source.form();
    if (options.invert)
        form.photometric = 1 - form.photometric;
    Selection all;
    Counts counts;
    Values values;
    Made made;
    kestu_error_t *err = nullptr;
    if ((err = all.open({}, form)) ||
        (conversion.make != make_same && (err = counts.measure(source, all))) ||
        (err = convert_levels(conversion, form, options, values)) ||
        (err = conversion.make(conversion, values, counts, form, made)))
        return err;
    form.bits[0] = made.bits;
    form.photometric = made.photometric;
    PictureOptions picture = options.picture;
    if (*conversion.quantity)
        picture.description += (picture.description.empty() ? "" : "\n") + made.said;
    if (!made.said.empty())
        done.said = printable(name_of_output(done.out).c_str()) + ": " + made.said + "\n";
    done.reading = false;
    return write_picture(done.out, form, picture, [&](PictureWriter &writer) {
        return put_rows(source, made, writer, done.reading);
    });
}

// In a folder, pictures keep the names of their files.
std::string output_for(const std::string &path, const ConversionOptions &options) {
    std::filesystem::path name = std::filesystem::path(path).filename();
    if (path == "-")
        name = "standard-input.tif";
    if (options.png)
        name.replace_extension(".png");
    return (std::filesystem::path(options.folder) / name).string();
}

// False, and the outcome told, when there is no folder or two pictures would have one name.
bool prepare_folder(const ConversionOptions &options, std::vector<std::string> outs,
                    Outcome &outcome) {
    std::error_code failure;
    std::filesystem::create_directories(options.folder, failure);
    if (failure)
        outcome.fail(options.folder + ": " + failure.message());
    std::sort(outs.begin(), outs.end());
    const auto twice = std::adjacent_find(outs.begin(), outs.end());
    if (twice != outs.end())
        outcome.fail(printable(twice->c_str()) + ": two pictures would have this name");
    return outcome.status() == exit_ok;
}

void run(const Conversion &conversion, ConversionOptions &options, Outcome &outcome) {
    std::vector<std::string> outs;
    auto &paths = options.batch.paths;
    if (options.folder.empty() && paths.size() == 2 && options.batch.list.empty()) {
        outs.push_back(paths.back());
        paths.pop_back();
    } else if (options.folder.empty()) {
        throw CLI::ValidationError("FILE OUT", "one picture and the file to be made are expected, "
                                               "or pictures and --to FOLDER");
    } else if (!gather_paths(options.batch, outcome)) {
        return;
    }
    for (size_t i = outs.size(); i < paths.size(); ++i)
        outs.push_back(output_for(paths[i], options));
    if (!options.folder.empty() && !prepare_folder(options, outs, outcome))
        return;
    Progress progress(std::string("kestu image ") + conversion.name, paths.size());
    in_order<Converted>(
        paths.size(), options.batch.workers(),
        [&](size_t i) {
            Converted done;
            done.out = outs[i];
            done.reading = false;
            if ((done.err = check_new(done.out, options.picture.force)))
                return done;
            done.reading = true;
            done.err = with_source(paths[i], options.page, [&](Source &source) {
                return convert(conversion, options, source, done);
            });
            return done;
        },
        [&](size_t i, Converted done) {
            progress.advance();
            const bool reading = done.reading;
            if (progress.ok(done.err, reading ? name_of_input(paths[i]) : name_of_output(done.out),
                            outcome))
                progress.aside([&] { print_about(done.out, done.said); });
        });
}

using Shared = std::shared_ptr<ConversionOptions>;

CLI::App *add(CLI::App &image, const Conversion &conversion, const Shared &options,
              Outcome &outcome) {
    CLI::App *command = image.add_subcommand(conversion.name, conversion.description);
    add_batch_options(*command, options->batch);
    command->get_option("FILE")->description(
        "A picture and the file to be made (.png or TIFF; - for a stream), or pictures and --to");
    command->add_option("--to", options->folder, "Put the pictures into this folder")
        ->type_name("FOLDER");
    command->add_flag("--png", options->png, "Make PNG files there");
    add_page_option(*command, options->page, "The page of each file [default: 1]");
    command->add_flag("--invert", options->invert, "Take white for black, and black for white");
    add_picture_options(*command, options->picture);
    command->footer(std::string(conversion.footer) + "\n\n" + ends_footer);
    command->callback([&conversion, options, &outcome] { run(conversion, *options, outcome); });
    return command;
}

void add_density_options(CLI::App &command, const Shared &options) {
    command
        .add_option("--saturated", options->saturated,
                    "Density of pixels at the top level and of infinite ones [default: the "
                    "largest that the depth can show]")
        ->type_name("DENSITY")
        ->check(number());
}

void add_fuji_options(CLI::App &command, const Shared &options) {
    const auto positive = [&](const char *name, double &value, const char *description) {
        command.add_option(name, value, description)
            ->capture_default_str()
            ->type_name("NUMBER")
            ->check(positive_number());
    };
    positive("--resolution", options->resolution, "Size of a pixel in micrometres");
    positive("--sensitivity", options->sensitivity, "Sensitivity of the scan");
    positive("--latitude", options->latitude, "Decades that the levels span");
}

} // namespace

void add_conversions(CLI::App &image, Outcome &outcome) {
    for (const Conversion &conversion : conversions) {
        const auto options = std::make_shared<ConversionOptions>();
        CLI::App *command = add(image, conversion, options, outcome);
        if (conversion.convert == to_density)
            add_density_options(*command, options);
        if (conversion.convert == to_intensity)
            add_fuji_options(*command, options);
    }
}

} // namespace program
