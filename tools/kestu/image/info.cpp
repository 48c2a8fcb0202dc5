// The page that `kestu image info` prints.
#include "common/text.hpp"
#include "image/image.hpp"

#include <algorithm>

namespace program {
namespace {

struct Name {
    int value;
    const char *name;
};

constexpr Name photometric_names[] = {
    {-1, "not given"}, {0, "white is zero"}, {1, "black is zero"},
    {2, "RGB"},        {3, "palette"},       {4, "transparency mask"},
    {5, "separated"},  {6, "YCbCr"},         {8, "CIE L*a*b*"}};
constexpr Name unit_names[] = {{-1, "not given, taken as inch"}, {2, "inch"}, {3, "centimetre"}};
constexpr Name compression_names[] = {
    {0, "not given"}, {1, "none"},        {2, "CCITT modified Huffman"}, {5, "LZW"}, {7, "JPEG"},
    {8, "Deflate"},   {32773, "PackBits"}};
constexpr Name planar_names[] = {{0, "not given"}, {1, "chunky"}, {2, "separate planes"}};

template <size_t N>
std::string named(int value, const Name (&names)[N]) {
    const auto *found = std::find_if(names, names + N, [&](Name n) { return n.value == value; });
    return text("%s (%d)", found == names + N ? "unknown" : found->name, value);
}

std::string pair_of(double x, double y, const char *unit) {
    return x == y ? text("%.4g %s", x, unit) : text("%.4g x %.4g %s", x, y, unit);
}

std::string resolution(kestu_img_t &image) {
    if (image.xres == 0.0 && image.yres == 0.0)
        return "not given";
    double x = 0.0;
    double y = 0.0;
    kestu_error_clear(kestu_img_get_resmm(&image, &x, &y));
    return pair_of(image.xres, image.yres, "pixels per inch") + ", " +
           pair_of(x, y, "pixels per mm");
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

std::string pixels(const kestu_img_t &image) {
    if (image.data8)
        return "8-bit matrix";
    return image.data16 ? "16-bit matrix" : "not read at this depth";
}

// Why a measure cannot be taken is part of the description, not a failure of the program.
std::string reason(kestu_error_t *err) {
    const char *message = kestu_error_root_cause(err)->message;
    std::string line = std::string("not measured: ") + (message ? message : "no memory");
    kestu_error_clear(err);
    return line;
}

void add_measures(std::string &page, kestu_img_t &image) {
    double entropy = 0.0;
    if (kestu_error_t *err = kestu_img_entropy(&image, &entropy))
        return add_field(page, "Measures", reason(err));
    add_field(page, "Entropy", text("%.4f bits per pixel", entropy));
    Histogram histogram;
    if (kestu_error_t *err = histogram.measure(image))
        return add_field(page, "Threshold", reason(err));
    add_field(page, "Threshold",
              text("%.2f of 0 to %zu", histogram.threshold(), histogram.levels().size() - 1));
}

} // namespace

std::string describe(const std::string &path, kestu_img_t &image) {
    std::string page = printable(path.c_str()) + "\n";
    add_field(page, "Format", image.type == 1 ? "TIFF, little-endian" : "nothing read");
    add_field(page, "Size", text("%'d x %'d pixels (width x height)", image.width, image.height));
    add_field(page, "Resolution", resolution(image));
    add_field(page, "Resolution unit", named(image.resunit, unit_names));
    add_field(page, "Printed size", printed_size(image));
    add_field(page, "Samples per pixel", text("%d", image.samples));
    add_field(page, "Bits per sample",
              text("%d, %d, %d (the first counts)", image.bits[0], image.bits[1], image.bits[2]));
    add_field(page, "Photometric", named(image.photometric, photometric_names));
    add_field(page, "Compression", named(image.compression, compression_names));
    add_field(page, "Planar layout", named(image.planar, planar_names));
    add_field(page, "Strips", strips(image));
    add_field(page, "Pixels", pixels(image));
    add_field(page, "Software", image.software ? printable(image.software) : "not given");
    add_measures(page, image);
    return page;
}

} // namespace program
