// The samples of an image: which type they have, and how many there are.
#pragma once

#include "kestu_img.h"

#include <cstddef>
#include <limits>

namespace kestu {

// Calls `use` with the matrix that holds the samples of an image of 8 or of 16 bits and returns
// what it returns; for other depths that type's zero.
template <typename Image, typename Use>
auto with_samples(Image &img, Use use) -> decltype(use(img.data8)) {
    switch (img.bits[0]) {
    case 8:
        return use(img.data8);
    case 16:
        return use(img.data16);
    default:
        return decltype(use(img.data8))();
    }
}

template <typename Sample>
constexpr size_t levels_of = size_t{1} << std::numeric_limits<Sample>::digits;

inline uint64_t pixels_of(const kestu_img_t &img) {
    if (img.height <= 0 || img.width <= 0)
        return 0;
    return static_cast<uint64_t>(img.height) * static_cast<uint64_t>(img.width);
}

} // namespace kestu
