// An image and what is measured of it.
#pragma once

#include "kestu_error.h"
#include "kestu_img.h"
#include "kestu_img_measure.h"
#include "kestu_mem.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace program {

// An image record that releases what it owns.
class Image {
  public:
    Image() = default;
    ~Image() { kestu_img_free(&record); }
    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    kestu_img_t record{};
};

// Reads the image at `path`, or of standard input for "-". A failure is told in words that help.
kestu_error_t *read_image(const std::string &path, Image &image);

// Makes `image` a black picture, black is zero, of 8 or 16 bits.
kestu_error_t *make_black(kestu_img_t &image, int width, int height, int bits);

// The counts of an image's gray levels.
class Histogram {
  public:
    Histogram() = default;
    ~Histogram() { kestu_mem_free(counts_); }
    Histogram(const Histogram &) = delete;
    Histogram &operator=(const Histogram &) = delete;

    kestu_error_t *measure(kestu_img_t &image) {
        return kestu_img_histogram(&image, &bins_, &counts_);
    }
    std::span<const uint64_t> levels() const { return {counts_, static_cast<size_t>(bins_)}; }
    double threshold() const { return kestu_img_thres_IJ(bins_, counts_); }

  private:
    int bins_ = 0;
    uint64_t *counts_ = nullptr;
};

// The description of an image, a line for each field, with entropy and threshold where they can be
// taken.
std::string describe(const std::string &path, kestu_img_t &image);

} // namespace program
