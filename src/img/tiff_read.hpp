// Reading TIFF images, wherever their bytes are. Errors, and what is done with the record, are
// those of the public readers.
#pragma once

#include "img/byte_source.hpp"
#include "kestu_img.h"

namespace kestu {

[[nodiscard]] kestu_error_t *read_tiff_info(ByteSource &source, kestu_img_t &img);
[[nodiscard]] kestu_error_t *read_tiff(ByteSource &source, kestu_img_t &img);

// An image of any format.
[[nodiscard]] kestu_error_t *read_image(ByteSource &source, kestu_img_t &img);

} // namespace kestu
