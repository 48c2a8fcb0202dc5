// Which images the measures take.
#pragma once

#include "kestu_img.h"

namespace kestu {

// An error of code 0 for an image that is not grayscale of 8 or 16 bits.
[[nodiscard]] kestu_error_t *check_grayscale(const kestu_img_t &img);

} // namespace kestu
