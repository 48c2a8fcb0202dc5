#include "image/describe.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <cstring>

namespace program {
namespace {

struct Name {
    int value;
    const char *name;
};

constexpr Name photometric_names[] = {{-1, "not given"},
                                      {0, "white is zero"},
                                      {1, "black is zero"},
                                      {2, "RGB"},
                                      {3, "palette"},
                                      {4, "transparency mask"},
                                      {5, "separated"},
                                      {6, "YCbCr"},
                                      {8, "CIE L*a*b*"},
                                      {32844, "logarithm of luminance"},
                                      {32845, "logarithm of luminance, and colour"}};
constexpr Name unit_names[] = {
    {-1, "not given, taken as inch"}, {1, "none"}, {2, "inch"}, {3, "centimetre"}};
constexpr Name compression_names[] = {{0, "not given"},
                                      {1, "none"},
                                      {2, "CCITT modified Huffman"},
                                      {3, "CCITT Group 3"},
                                      {4, "CCITT Group 4"},
                                      {5, "LZW"},
                                      {6, "old JPEG"},
                                      {7, "JPEG"},
                                      {8, "Deflate"},
                                      {32773, "PackBits"},
                                      {32909, "PixarLog"},
                                      {32946, "Deflate"},
                                      {34661, "JBIG"},
                                      {34676, "SGI logarithms"},
                                      {34677, "SGI logarithms, 24 bits"},
                                      {34887, "LERC"},
                                      {34925, "LZMA"},
                                      {50000, "Zstandard"},
                                      {50001, "WebP"}};
constexpr Name planar_names[] = {{0, "not given"}, {1, "chunky"}, {2, "separate planes"}};
constexpr Name format_names[] = {{1, "unsigned"}, {2, "signed"}, {3, "float"}, {4, "undefined"}};
constexpr Name orientation_names[] = {{1, "upright"},
                                      {2, "mirrored"},
                                      {3, "turned by 180 degrees"},
                                      {4, "upside down, mirrored"},
                                      {5, "turned and mirrored"},
                                      {6, "turned by 90 degrees"},
                                      {7, "turned and mirrored"},
                                      {8, "turned by 270 degrees"}};

template <size_t N>
std::string named(int value, const Name (&names)[N]) {
    const auto *found = std::find_if(names, names + N, [&](Name n) { return n.value == value; });
    return text("%s (%d)", found == names + N ? "unknown" : found->name, value);
}

std::string pair_of(double x, double y, const char *unit) {
    return x == y ? text("%.4g %s", x, unit) : text("%.4g x %.4g %s", x, y, unit);
}

std::string printed_size(const kestu_img_t &image) {
    if (!(image.xres > 0.0) || !(image.yres > 0.0))
        return "unknown without a resolution";
    return text("%.1f x %.1f mm", image.width / image.xres * 25.4,
                image.height / image.yres * 25.4);
}

std::string strips(const kestu_img_t &image) {
    unsigned long long bytes = 0;
    for (int i = 0; i < image.n_strip_bytes; ++i)
        bytes += image.strip_bytes[i];
    std::string line = counted(static_cast<unsigned>(image.n_strip_offsets), "strip");
    line += ", " + counted(bytes, "byte") + " of samples";
    if (image.n_strip_offsets > 0)
        line += text(", the first at offset %'u", image.strip_offsets[0]);
    return line;
}

// What the plain reader says of the whole file.
std::string plain_page(kestu_img_t &image) {
    std::string page;
    add_field(page, "Format", "TIFF, little-endian");
    add_field(page, "Size", text("%'d x %'d pixels (width x height)", image.width, image.height));
    add_field(page, "Resolution", resolution_of(image));
    add_field(page, "Resolution unit", named(image.resunit, unit_names));
    add_field(page, "Printed size", printed_size(image));
    add_field(page, "Samples per pixel", text("%d", image.samples));
    add_field(page, "Bits per sample",
              text("%d, %d, %d (the first counts)", image.bits[0], image.bits[1], image.bits[2]));
    add_field(page, "Photometric", named(image.photometric, photometric_names));
    add_field(page, "Compression", named(image.compression, compression_names));
    add_field(page, "Planar layout", named(image.planar, planar_names));
    add_field(page, "Strips", strips(image));
    add_field(page, "Software", image.software ? printable(image.software) : "not given");
    return page;
}

struct Texts {
    std::string software, description;
};

Texts texts_of(Source &source) {
    Texts texts;
    if (source.tiff())
        kestu_tiff_tags(
            source.tiff(),
            [](int tag, const char *, const char *value, void *baton) {
                auto &found = *static_cast<Texts *>(baton);
                if (tag == 305)
                    found.software = value;
                if (tag == 270)
                    found.description = value;
                return 0;
            },
            &texts);
    return texts;
}

// What is in the file, before it became levels of gray.
void add_stored(std::string &page, const kestu_tiff_info_t &info) {
    const std::string extra = info.ignored > 0 ? text(", %d of them left out", info.ignored) : "";
    add_field(page, "Samples per pixel", text("%d%s", info.samples, extra.c_str()));
    add_field(page, "Bits per sample",
              text("%d, %s", info.bits, named(info.format, format_names).c_str()));
    add_field(page, "Photometric", named(info.photometric, photometric_names));
    add_field(page, "Compression", named(info.compression, compression_names));
    add_field(page, "Planar layout", named(info.planar, planar_names));
    add_field(page, "Blocks", info.tiled ? "tiles" : "strips");
    add_field(page, "Orientation", named(info.orientation, orientation_names));
}

std::string meaning(const kestu_tiff_info_t &info) {
    if (info.factor == 1 && info.offset == 0)
        return "the values of the file";
    return text("value = %.9g + %.9g x level", info.offset, info.factor);
}

std::string wide_page(Source &source) {
    std::string page;
    const kestu_img_t &form = source.form();
    const kestu_tiff_info_t *info = source.info();
    add_field(page, "Format", source.format());
    if (info)
        add_field(page, "Page", text("%u of %u", info->page, info->pages));
    add_field(page, "Size", text("%'d x %'d pixels (width x height)", form.width, form.height));
    add_field(page, "Resolution",
              info && info->resunit == 1 && info->xres > 0
                  ? pair_of(info->xres, info->yres, "without a unit")
                  : resolution_of(form));
    if (info)
        add_field(page, "Resolution unit", named(info->resunit, unit_names));
    add_field(page, "Printed size", printed_size(form));
    if (info)
        add_stored(page, *info);
    const std::string how = source.conversion();
    add_field(page, "Read as",
              text("%d-bit gray, %s%s%s", source.bits(),
                   form.photometric == 0 ? "white is zero" : "black is zero",
                   how.empty() ? "" : ": ", how.c_str()));
    if (info)
        add_field(page, "Levels", meaning(*info));
    return page;
}

void add_measures(std::string &page, const Counts &counts) {
    add_field(page, "Entropy", text("%.4f bits per pixel", counts.entropy()));
    add_field(page, "Threshold",
              text("%.2f of 0 to %zu (intermeans), %.2f (Otsu)", counts.threshold(),
                   counts.levels.size() - 1, counts.otsu()));
}

} // namespace

std::string resolution_of(const kestu_img_t &image) {
    if (image.xres == 0.0 && image.yres == 0.0)
        return "not given";
    double x = 0.0;
    double y = 0.0;
    kestu_error_clear(kestu_img_get_resmm(&image, &x, &y));
    return pair_of(image.xres, image.yres, "pixels per inch") + ", " +
           pair_of(x, y, "pixels per mm");
}

std::string page_of(Source &source, const std::string &readable, const Counts &counts) {
    Image image;
    const Texts texts = texts_of(source);
    const bool plain =
        source.format().starts_with("TIFF") && (!source.info() || source.info()->plain);
    kestu_error_t *err =
        plain ? kestu_img_read_tiff_info(readable.c_str(), &image.record) : nullptr;
    std::string page = plain && !err ? plain_page(image.record) : wide_page(source);
    if ((!plain || err) && !texts.software.empty())
        add_field(page, "Software", texts.software);
    kestu_error_clear(err);
    if (!texts.description.empty())
        add_field(page, "Description", texts.description);
    if (source.info() && source.info()->warning[0])
        add_field(page, "Warning", printable(source.info()->warning));
    add_measures(page, counts);
    return page;
}

Json json_of_page(const std::string &name, Source &source, const Counts &counts) {
    const kestu_img_t &form = source.form();
    Json json = {{"file", name}, {"format", source.format()}};
    if (const kestu_tiff_info_t *info = source.info())
        json.update({{"page", info->page},
                     {"pages", info->pages},
                     {"samples", info->samples},
                     {"ignored_samples", info->ignored},
                     {"stored_bits", info->bits},
                     {"sample_format", info->format},
                     {"stored_photometric", info->photometric},
                     {"compression", info->compression},
                     {"tiled", info->tiled != 0},
                     {"orientation", info->orientation},
                     {"plain", info->plain != 0},
                     {"factor", info->factor},
                     {"offset", info->offset}});
    json.update({{"width", form.width},
                 {"height", form.height},
                 {"bits", form.bits[0]},
                 {"photometric", form.photometric},
                 {"xres", form.xres},
                 {"yres", form.yres}});
    const Texts texts = texts_of(source);
    if (!texts.software.empty())
        json["software"] = texts.software;
    if (!texts.description.empty())
        json["description"] = texts.description;
    json.update({{"entropy", counts.entropy()},
                 {"threshold", counts.threshold()},
                 {"otsu", counts.otsu()}});
    return json;
}

} // namespace program
