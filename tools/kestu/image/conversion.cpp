#include "image/conversion.hpp"

#include "common/input_file.hpp"
#include "common/text.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace program {
namespace {

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

constexpr Conversion conversions[] = {
    {"density", "densities", "Write the optical density of each pixel",
     "The density of level q is log10(M / (M - q)) where white is zero, and log10(M / q) where "
     "black is zero. Level M is saturated in both, and so is what would be infinite.",
     Taking::density, true, to_density, make_scaled},
    {"fuji", "relative intensities", "Write the relative intensity of an imaging-plate scan",
     "The intensity of level q is 10^((v - 1/2) x latitude) x resolution^2 / 10000 x 4000 / "
     "sensitivity, in which v is q / M where white is zero, and (M - q) / M where black is zero.",
     Taking::intensity, true, to_intensity, make_scaled},
    {"mask", "", "Write white for data and black for the dark end of the range",
     "All levels but that of the dark end are data.", Taking::nothing, true, to_mask, make_mask},
    {"convert", "", "Write the picture anew, as TIFF or PNG",
     "The levels stay what they are; --invert exchanges black and white.", Taking::nothing, false,
     to_levels, make_same}};

} // namespace

std::span<const Conversion> all_conversions() {
    return conversions;
}

// Converts an image of one row that has every level once.
kestu_error_t *convert_levels(const Conversion &conversion, const kestu_img_t &form,
                              const ConversionOptions &options, Values &values) {
    values.resize(form.bits[0] == 8 ? 256 : 65536);
    std::vector<uint8_t> samples8(values.size());
    std::vector<uint16_t> samples16(values.size());
    std::iota(samples8.begin(), samples8.end(), uint8_t{0});
    std::iota(samples16.begin(), samples16.end(), uint16_t{0});
    uint8_t *row8 = samples8.data();
    uint16_t *row16 = samples16.data();
    kestu_img_t levels = form;
    levels.width = static_cast<int32_t>(values.size());
    levels.height = 1;
    levels.data8 = &row8;
    levels.data16 = &row16;
    return conversion.convert(levels, values, options);
}

} // namespace program
