// Which images the measures take, and how many levels these have.
#pragma once

#include "kestu_img.h"

#include <cstddef>
#include <limits>

namespace kestu {

// An error of code 0 for an image that is not grayscale of 8 or 16 bits.
[[nodiscard]] kestu_error_t *check_grayscale(const kestu_img_t &img);

template <typename Sample>
constexpr size_t levels_of = size_t{1} << std::numeric_limits<Sample>::digits;

} // namespace kestu
