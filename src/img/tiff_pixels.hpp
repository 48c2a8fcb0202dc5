// Reading the strips of a TIFF file into the rows of an image.
#pragma once

#include "img/file.hpp"
#include "kestu_img.h"

namespace kestu {

// Makes the matrix for the depth of `img` and fills it from the strips that the record names. Does
// nothing for depths other than 8 and 16. After a failure the record may hold a matrix.
kestu_error_t *read_tiff_pixels(File &file, kestu_img_t &img);

} // namespace kestu
