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

  private:
    int bins_ = 0;
    uint64_t *counts_ = nullptr;
};

} // namespace program
