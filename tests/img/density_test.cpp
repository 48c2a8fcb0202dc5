// The mask and the density measures, pixel for pixel beside their formulas.
#include "picture.hpp"
#include "support/test.hpp"

using namespace kestu::test;

namespace {

struct Measure {
    const char *action;
    std::function<kestu_error_t *(const kestu_img_t *, double **)> convert;
    std::function<double(double q, double full, bool white_is_zero)> formula;
};

const Measure measures[] = {
    {"Cannot provide image data mask.", kestu_img_data_dmask,
     [](double q, double full, bool white_is_zero) {
         return q == (white_is_zero ? full : 0) ? 0.0 : 1.0;
     }},
    {"Can't calculate optical intensity.",
     [](const kestu_img_t *img, double **out) { return kestu_img_calc_density(img, out, 4.5); },
     [](double q, double full, bool white_is_zero) {
         return q == full ? 4.5 : std::log10(full / (white_is_zero ? full - q : q));
     }},
    {"Can't calculate Fuji relative intensity.",
     [](const kestu_img_t *img, double **out) {
         return kestu_img_calc_fujiri(img, out, 50, 1000, 4);
     },
     [](double q, double full, bool white_is_zero) {
         const double v = white_is_zero ? q / full : (full - q) / full;
         return std::pow(10.0, (v - 0.5) * 4) * (50.0 * 50 / 10000 * (4000.0 / 1000));
     }},
};

// An out-matrix filled with a value that no formula gives.
struct Matrix {
    Matrix(size_t height, size_t width) : values(height, std::vector<double>(width, -77)) {
        for (auto &row : values)
            rows.push_back(row.data());
    }
    std::vector<std::vector<double>> values;
    std::vector<double *> rows;
};

template <typename Sample>
void expect_formula(const Measure &measure, size_t height, size_t width) {
    Picture<Sample> picture(height, width);
    const double full = std::numeric_limits<Sample>::max();
    picture.samples[0][0] = std::numeric_limits<Sample>::max();
    picture.samples[0][1] = 0;
    for (const int photometric : {0, 1}) {
        picture.img.photometric = photometric;
        Matrix out(height, width);
        ASSERT_OK(measure.convert(&picture.img, out.rows.data()));
        for (size_t r = 0; r < height; ++r)
            for (size_t c = 0; c < width; ++c)
                ASSERT_EQ(out.values[r][c],
                          measure.formula(picture.samples[r][c], full, photometric == 0))
                    << measure.action << " " << picture.samples[r][c] << ", " << photometric;
    }
}

} // namespace

// Images with room for a table of all levels, and without.
TEST(Density, EveryPixelIsWhatTheFormulaGives) {
    for (const Measure &measure : measures) {
        expect_formula<uint8_t>(measure, 3, 5);
        expect_formula<uint8_t>(measure, 16, 16);
        expect_formula<uint16_t>(measure, 7, 100);
        expect_formula<uint16_t>(measure, 130, 1100);
        expect_formula<uint16_t>(measure, 2050, 65);
    }
}

TEST(Density, OtherImagesAreRefusedAndEmptyOnesLeftAlone) {
    for (const Measure &measure : measures) {
        kestu_img_t img = {};
        img.bits[0] = 8;
        img.samples = 3;
        EXPECT_CHAIN(measure.convert(&img, nullptr), 0, measure.action,
                     "The image is not grayscale.");
        img.samples = 1;
        EXPECT_OK(measure.convert(&img, nullptr));
    }
}
