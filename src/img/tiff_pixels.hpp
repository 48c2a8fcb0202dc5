// Reading the strips of a TIFF file into the rows of an image.
#pragma once

#include "img/byte_source.hpp"
#include "kestu_img.h"

namespace kestu {

// Makes the matrix for the depth of `img` and fills it from the strips that the record names. Does
// nothing for depths other than 8 and 16. After a failure the record may hold a matrix.
[[nodiscard]] kestu_error_t *read_tiff_pixels(ByteSource &source, kestu_img_t &img);

} // namespace kestu
