// Handing pixels to the caller's callback.
#pragma once

#include "kestu_img_shape.h"

#include <cstdint>
#include <initializer_list>
#include <limits>

namespace kestu {

// Shapes are computed in 64 bits, so that nothing overflows near the ends of int.
struct Pixel {
    int64_t x, y;
};

class Plotter {
  public:
    Plotter(kestu_img_plot_func callback, void *data) : callback_(callback), data_(data) {}

    // Stops at the first error. Pixels that an int cannot name are left out.
    [[nodiscard]] kestu_error_t *plot(std::initializer_list<Pixel> pixels,
                                      double intensity = 1.0) const {
        for (const auto [x, y] : pixels) {
            if (!fits(x) || !fits(y))
                continue;
            kestu_error_t *err =
                callback_(static_cast<int>(x), static_cast<int>(y), data_, intensity);
            if (err)
                return err;
        }
        return nullptr;
    }

  private:
    static bool fits(int64_t coordinate) {
        return coordinate >= std::numeric_limits<int>::min() &&
               coordinate <= std::numeric_limits<int>::max();
    }

    kestu_img_plot_func callback_;
    void *data_;
};

} // namespace kestu
