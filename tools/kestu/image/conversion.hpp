// What levels become: densities, intensities, masks, or the same again.
#pragma once

#include "image/batch.hpp"
#include "image/counts.hpp"
#include "image/picture.hpp"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace program {

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

// A level for each level, and what is said of the picture that is made.
struct Made {
    std::vector<uint16_t> table;
    int bits = 16, photometric = 0;
    std::string said;
};

// Which options a conversion takes beside the common ones.
enum class Taking { nothing, density, intensity };

struct Conversion {
    const char *name;
    const char *quantity; // what the levels of the picture stand for
    const char *description;
    const char *footer;
    Taking options;
    bool counts; // goes by how often levels occur
    kestu_error_t *(*convert)(const kestu_img_t &levels, Values &values,
                              const ConversionOptions &options);
    kestu_error_t *(*make)(const Conversion &conversion, const Values &values, const Counts &counts,
                           const kestu_img_t &form, Made &made);
};

std::span<const Conversion> all_conversions();

// What every level of an image of this form becomes.
kestu_error_t *convert_levels(const Conversion &conversion, const kestu_img_t &form,
                              const ConversionOptions &options, Values &values);

} // namespace program
