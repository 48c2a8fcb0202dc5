// Grayscale images.
//
//     kestu::Image image(60, 50, 8);               // 60 rows, 50 columns of 8 bits, all 0
//     image.row<uint8_t>(10)[20] = 255;
//     kestu::draw_circle(25, 30, 20, [&](int x, int y, double) {
//         image.row<uint8_t>(y)[size_t(x)] = 200;
//     });
//     image.write("circle.tif");
//     kestu::Histogram levels = kestu::Image::read("circle.tif").histogram();
//     assert(levels[255] == 1 && levels.size() == 256);
#pragma once

#include "../kestu_img.h"
#include "../kestu_img_measure.h"
#include "../kestu_img_shape.h"
#include "array.hpp"

#include <concepts>
#include <span>

namespace kestu {
inline namespace KESTU_CPP {

// The counts of all gray levels.
class Histogram {
  public:
    Histogram(Histogram &&other) noexcept
        : counts_(std::exchange(other.counts_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    Histogram &operator=(Histogram &&other) noexcept {
        std::swap(counts_, other.counts_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Histogram() { kestu_mem_free(counts_); }

    // The counts, of which the first is that of level 0.
    std::span<const uint64_t> counts() const noexcept {
        return {counts_, static_cast<size_t>(size_)};
    }

    // How many pixels have that level.
    uint64_t operator[](size_t level) const noexcept { return counts_[level]; }

    // How many levels there are: 256 or 65536.
    size_t size() const noexcept { return static_cast<size_t>(size_); }

    // The count of level 0.
    const uint64_t *begin() const noexcept { return counts_; }

    // Behind the last count.
    const uint64_t *end() const noexcept { return counts_ + size_; }

    // Between the dark and the bright pixels (kestu_img_thres_IJ).
    double threshold() const noexcept { return kestu_img_thres_IJ(size_, counts_); }

  private:
    friend class Image;
    Histogram() noexcept = default;

    uint64_t *counts_ = nullptr;
    int size_ = 0;
};

// The depth of the pixels' type: uint8_t and uint16_t.
template <typename Pixel>
concept IsPixel = std::same_as<std::remove_const_t<Pixel>, uint8_t> ||
    std::same_as<std::remove_const_t<Pixel>, uint16_t>;

// An image with what its file says of it.
class Image {
  public:
    Image() noexcept = default;

    // One of `bits`, 8 or 16, whose pixels are 0; black is zero.
    Image(int height, int width, int bits) { detail::check(allocate(height, width, bits)); }

    // As the constructor, but returns the error.
    static Expected<Image> make(std::nothrow_t, int height, int width, int bits) {
        Image image;
        if (kestu_error_t *err = image.allocate(height, width, bits))
            return detail::failed(err);
        return image;
    }

    // Reads a file (kestu_img_read).
    static Image read(CString path) {
        Image image;
        detail::check(kestu_img_read(path, &image.img_));
        return image;
    }

    // As `read` above, but returns the error.
    static Expected<Image> read(std::nothrow_t, CString path) {
        Image image;
        if (kestu_error_t *err = kestu_img_read(path, &image.img_))
            return detail::failed(err);
        return image;
    }

    // Writes a TIFF file (kestu_img_write_tiff).
    void write(CString path) const { detail::check(kestu_img_write_tiff(path, &img_)); }

    // As `write` above, but returns the error.
    Expected<void> write(std::nothrow_t, CString path) const {
        return detail::outcome(kestu_img_write_tiff(path, &img_));
    }

    Image(Image &&other) noexcept : img_(std::exchange(other.img_, kestu_img_t{})) {}
    Image &operator=(Image &&other) noexcept {
        std::swap(img_, other.img_);
        return *this;
    }
    ~Image() { kestu_img_free(&img_); }

    // Rows.
    int height() const noexcept { return img_.height; }

    // Columns.
    int width() const noexcept { return img_.width; }

    // Bits of a sample.
    int bits() const noexcept { return img_.bits[0]; }

    // Whether its pixels are of that type: only then may its rows be asked for.
    template <IsPixel Pixel>
    bool has() const noexcept {
        return rows<Pixel>() != nullptr;
    }

    // The pixels of a row, all samples of each.
    template <IsPixel Pixel>
    std::span<Pixel> row(int y) noexcept {
        return {rows<Pixel>()[y], row_size()};
    }

    // The pixels of a row, all samples of each.
    template <IsPixel Pixel>
    std::span<const Pixel> row(int y) const noexcept {
        return {rows<Pixel>()[y], row_size()};
    }

    // The counts of its gray levels. Fails, as all measures do, for an image that is not measured
    // (kestu_img_measure.h).
    Histogram histogram() const { return take(histogram(std::nothrow)); }

    // As `histogram` above, but returns the error.
    Expected<Histogram> histogram(std::nothrow_t) const {
        Histogram made;
        if (kestu_error_t *err = kestu_img_histogram(&img_, &made.size_, &made.counts_))
            return detail::failed(err);
        return made;
    }

    // The entropy of its gray levels in bits (kestu_img_entropy).
    double entropy() const { return take(entropy(std::nothrow)); }

    // As `entropy` above, but returns the error.
    Expected<double> entropy(std::nothrow_t) const {
        double bits = 0;
        if (kestu_error_t *err = kestu_img_entropy(&img_, &bits))
            return detail::failed(err);
        return bits;
    }

    // The optical density of each pixel (kestu_img_calc_density).
    Matrix<double> density(double saturated) const {
        return take(density(std::nothrow, saturated));
    }

    // As `density` above, but returns the error.
    Expected<Matrix<double>> density(std::nothrow_t, double saturated) const {
        return measure([&](double **out) { return kestu_img_calc_density(&img_, out, saturated); });
    }

    // The relative intensity of each pixel of an imaging-plate scan (kestu_img_calc_fujiri).
    Matrix<double> intensity(double resolution, double sensitivity, double latitude) const {
        return take(intensity(std::nothrow, resolution, sensitivity, latitude));
    }

    // As `intensity` above, but returns the error.
    Expected<Matrix<double>> intensity(std::nothrow_t, double resolution, double sensitivity,
                                       double latitude) const {
        return measure([&](double **out) {
            return kestu_img_calc_fujiri(&img_, out, resolution, sensitivity, latitude);
        });
    }

    // 0 at the dark end and 1 elsewhere (kestu_img_data_dmask).
    Matrix<double> mask() const { return take(mask(std::nothrow)); }

    // As `mask` above, but returns the error.
    Expected<Matrix<double>> mask(std::nothrow_t) const {
        return measure([&](double **out) { return kestu_img_data_dmask(&img_, out); });
    }

    // The record, which stays the image's.
    kestu_img_t *get() noexcept { return &img_; }

    // The record, which stays the image's.
    const kestu_img_t *get() const noexcept { return &img_; }

  private:
    size_t row_size() const noexcept {
        return static_cast<size_t>(img_.width) * static_cast<size_t>(img_.samples);
    }

    template <IsPixel Pixel>
    auto rows() const noexcept {
        if constexpr (sizeof(Pixel) == 1)
            return img_.data8;
        else
            return img_.data16;
    }

    kestu_error_t *allocate(int height, int width, int bits) {
        if (bits != 8 && bits != 16)
            return kestu_error_create_i(KESTU_ERROR_ERROR, KESTU_ERR_IMAGE_STRUCTURE, 0, nullptr,
                                        nullptr, nullptr, "Images have 8 or 16 bits.");
        kestu_error_t *err = bits == 8 ? take_rows(height, width, img_.data8)
                                       : take_rows(height, width, img_.data16);
        if (err)
            return err;
        img_.height = height;
        img_.width = width;
        img_.samples = 1;
        img_.bits[0] = bits;
        img_.photometric = 1;
        return nullptr;
    }

    template <typename Pixel>
    static kestu_error_t *take_rows(int height, int width, Pixel **&rows) noexcept {
        auto matrix = Matrix<Pixel>::make(std::nothrow, 0, height - 1, 0, width - 1);
        if (!matrix)
            return matrix.error().release();
        rows = matrix->release();
        return nullptr;
    }

    template <typename Measure>
    Expected<Matrix<double>> measure(Measure fill) const {
        auto out = Matrix<double>::make(std::nothrow, 0, height() - 1, 0, width() - 1);
        if (out)
            if (kestu_error_t *err = fill(out->get()))
                return detail::failed(err);
        return out;
    }

    kestu_img_t img_{};
};

namespace detail {

// Draws with `plot`, which is called with column, row and how much of the pixel is covered.
template <typename Shape, typename Plot>
void draw(Shape shape, Plot &plot) {
    const auto set = [&plot](int x, int y, double intensity) -> kestu_error_t * {
        plot(x, y, intensity);
        return nullptr;
    };
    Carried carried(set);
    kestu_error_t *err = shape(carried.template callback<kestu_img_plot_func, 2>(), &carried);
    carried.rethrow();
    check(err);
}

} // namespace detail

// Draws a circle of radius `r` around (`x`, `y`) with whole pixels, each handed to `plot`. What
// that throws ends the drawing.
template <typename Plot>
void draw_circle(int x, int y, int r, Plot plot) {
    detail::draw([=](auto fn, void *data) { return kestu_img_circle(x, y, r, fn, data); }, plot);
}

// As `draw_circle`, with a line of width 1 that covers pixels in part.
template <typename Plot>
void draw_smooth_circle(int x, int y, int r, Plot plot) {
    detail::draw([=](auto fn, void *data) { return kestu_img_circle_aa(x, y, r, fn, data); }, plot);
}

// Draws an ellipse around (`x`, `y`) with half-axes `a` and `b` with whole pixels, each handed to
// `plot`. What that throws ends the drawing.
template <typename Plot>
void draw_ellipse(int x, int y, int a, int b, Plot plot) {
    detail::draw([=](auto fn, void *data) { return kestu_img_ellipse(x, y, a, b, fn, data); },
                 plot);
}

// As `draw_ellipse`, with a line of that width that covers pixels in part.
template <typename Plot>
void draw_smooth_ellipse(double x, double y, double a, double b, double width, Plot plot) {
    detail::draw(
        [=](auto fn, void *data) { return kestu_img_ellipse_waa(x, y, a, b, width, fn, data); },
        plot);
}

} // namespace KESTU_CPP
} // namespace kestu
