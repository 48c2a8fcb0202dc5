// `kestu image compare`: how far two pictures differ.
#include "common/input_file.hpp"
#include "common/json.hpp"
#include "common/new_file.hpp"
#include "common/text.hpp"
#include "image/commands.hpp"
#include "image/counts.hpp"
#include "image/picture.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

namespace program {
namespace {

struct CompareOptions {
    std::string first, second, out;
    PictureOptions picture;
    Region region;
    uint32_t page = 1;
    bool json = false;
};

struct Difference {
    double squares = 0, sum = 0;
    uint64_t pixels = 0, different = 0;
    unsigned largest = 0;
    int x = 0, y = 0; // of the largest
    int bits = 8;

    double mean_square() const { return squares / static_cast<double>(pixels); }
    double full() const { return bits == 8 ? 255 : 65535; }
    // Infinite for pictures that are the same.
    double psnr() const { return 10 * std::log10(full() * full() / mean_square()); }
};

// The levels of a row, black is zero, of a picture that has 16 bits if `wide`.
class Levels {
  public:
    Levels(Source &source, bool wide) : source_(source), wide_(wide), row_(source.row_bytes()) {}

    kestu_error_t *next(std::vector<uint16_t> &out) {
        if (kestu_error_t *err = source_.next(row_.data()))
            return err;
        const auto *words = reinterpret_cast<const uint16_t *>(row_.data());
        const unsigned full = wide_ ? 65535 : 255;
        for (size_t c = 0; c < out.size(); ++c) {
            unsigned level = source_.bits() == 8 ? row_[c] * (wide_ ? 257U : 1U) : words[c];
            if (source_.form().photometric == 0)
                level = full - level;
            out[c] = static_cast<uint16_t>(level);
        }
        return nullptr;
    }

  private:
    Source &source_;
    bool wide_;
    std::vector<uint8_t> row_;
};

// Calls `use` with the absolute differences of every row.
template <typename Use>
kestu_error_t *for_rows(Source &a, Source &b, Selection &selection, Use use) {
    const bool wide = a.bits() == 16 || b.bits() == 16;
    Levels first(a, wide);
    Levels second(b, wide);
    const auto width = static_cast<size_t>(a.width());
    std::vector<uint16_t> left(width), right(width);
    for (int y = 0; y < a.height(); ++y) {
        kestu_error_t *err = first.next(left);
        if (err || (err = second.next(right)))
            return err;
        const std::vector<uint8_t> &inside = selection.row(y);
        for (size_t c = 0; c < width; ++c) {
            const int difference = std::abs(int{left[c]} - int{right[c]});
            left[c] = static_cast<uint16_t>(inside[c] ? difference : 0);
        }
        if ((err = use(y, left, inside)))
            return err;
    }
    return nullptr;
}

kestu_error_t *measure(Source &a, Source &b, Selection &selection, Difference &d) {
    d.bits = std::max(a.bits(), b.bits());
    kestu_error_t *err = for_rows(
        a, b, selection,
        [&](int y, const std::vector<uint16_t> &row, const auto &inside) -> kestu_error_t * {
            for (size_t c = 0; c < row.size(); ++c) {
                const unsigned difference = row[c];
                d.pixels += inside[c];
                d.different += difference > 0;
                d.sum += difference;
                d.squares += double(difference) * difference;
                if (difference > d.largest) {
                    d.largest = difference;
                    d.x = static_cast<int>(c);
                    d.y = y;
                }
            }
            return nullptr;
        });
    return err || d.pixels > 0 ? err : in_words("no pixel is selected");
}

// White where pictures differ most, black where they are the same.
kestu_error_t *write_difference(const CompareOptions &options, Source &a, Source &b,
                                Selection &selection, const Difference &d) {
    kestu_img_t form = a.form();
    form.bits[0] = d.bits;
    form.photometric = 1;
    PictureOptions picture = options.picture;
    picture.description += (picture.description.empty() ? "" : "\n") +
                           text("levels are differences, 0 to %u", d.largest);
    return write_picture(options.out, form, picture, [&](PictureWriter &writer) {
        std::vector<uint8_t> bytes(static_cast<size_t>(form.width));
        return for_rows(a, b, selection, [&](int, const std::vector<uint16_t> &row, const auto &) {
            if (d.bits == 16)
                return writer.put(row.data());
            std::copy(row.begin(), row.end(), bytes.begin());
            return writer.put(bytes.data());
        });
    });
}

std::string page_of(const Difference &d) {
    std::string page;
    const double part = 100 * static_cast<double>(d.different) / static_cast<double>(d.pixels);
    add_field(page, "Pixels compared", text("%'llu", static_cast<unsigned long long>(d.pixels)));
    add_field(page, "Different",
              text("%'llu (%.4g %%)", static_cast<unsigned long long>(d.different), part));
    add_field(page, "Mean difference",
              text("%.6g of %.0f levels", d.sum / static_cast<double>(d.pixels), d.full()));
    add_field(page, "Mean squared error", text("%.6g", d.mean_square()));
    add_field(page, "PSNR", d.different > 0 ? text("%.2f dB", d.psnr()) : "infinite");
    add_field(page, "Largest difference",
              d.different > 0 ? text("%u, first at column %d, row %d", d.largest, d.x, d.y) : "0");
    return page;
}

Json json_of(const CompareOptions &options, const Difference &d) {
    Json json = {{"files", {options.first, options.second}},
                 {"pixels", d.pixels},
                 {"different", d.different},
                 {"mean_difference", d.sum / static_cast<double>(d.pixels)},
                 {"mean_squared_error", d.mean_square()},
                 {"psnr_db", nullptr},
                 {"largest_difference", d.largest},
                 {"column", d.x},
                 {"row", d.y}};
    if (d.different > 0)
        json["psnr_db"] = d.psnr();
    return json;
}

kestu_error_t *compare_sources(const CompareOptions &options, Source &a, Source &b, Difference &d) {
    if (a.width() != b.width() || a.height() != b.height())
        return in_words(text("has %d x %d pixels, and the first picture %d x %d", b.width(),
                             b.height(), a.width(), a.height()));
    Selection selection;
    kestu_error_t *err = selection.open(options.region, a.form());
    if (err || (err = measure(a, b, selection, d)) || options.out.empty())
        return err;
    return write_difference(options, a, b, selection, d);
}

void compare(const CompareOptions &options, Outcome &outcome) {
    Difference d;
    std::string subject = name_of_input(options.first);
    const bool done =
        outcome.ok(with_source(options.first, options.page,
                               [&](Source &a) {
                                   subject = name_of_input(options.second);
                                   return with_source(options.second, options.page, [&](Source &b) {
                                       return compare_sources(options, a, b, d);
                                   });
                               }),
                   subject);
    if (!done)
        return;
    const std::string page = options.json ? document(json_of(options, d)) : page_of(d);
    print_about(options.out, page);
}

} // namespace

void add_compare(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("compare", "Tell how far two pictures differ");
    auto options = std::make_shared<CompareOptions>();
    command->add_option("A", options->first, "A picture; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("B", options->second, "Another one of the same size")
        ->required()
        ->type_name("FILE");
    command->add_option("--out", options->out, "Write the differences to this picture")
        ->type_name("FILE");
    add_picture_options(*command, options->picture);
    add_page_option(*command, options->page, "The page of both files [default: 1]");
    add_region_options(*command, options->region);
    command->add_flag("--json", options->json, "Print a JSON object");
    command->footer("Levels are compared with black as zero; of pictures of 8 and 16 bits the one "
                    "of 8 is stretched. Where the pictures are the same, PSNR is infinite.");
    command->callback([options, &outcome] { compare(*options, outcome); });
}

} // namespace program
