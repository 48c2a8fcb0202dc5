// `kestu image density`, `fuji`, `mask` and `convert`: pictures made of others, row by row.
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/commands.hpp"
#include "image/conversion.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <vector>

namespace program {
namespace {

constexpr const char *ends_footer =
    "Where white is zero, level 0 is white, and M, the largest level, is the dark end; where black "
    "is zero, 0 is the dark end. The file tells which one it is; --invert takes it for the other.";

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
    if ((err = all.open({}, form)) || (conversion.counts && (err = counts.measure(source, all))) ||
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
    for (const Conversion &conversion : all_conversions()) {
        const auto options = std::make_shared<ConversionOptions>();
        CLI::App *command = add(image, conversion, options, outcome);
        if (conversion.options == Taking::density)
            add_density_options(*command, options);
        if (conversion.options == Taking::intensity)
            add_fuji_options(*command, options);
    }
}

} // namespace program
