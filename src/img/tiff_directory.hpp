// Reading the header and the directories of a TIFF file into an image record.
#pragma once

#include "img/byte_source.hpp"
#include "kestu_img.h"

namespace kestu {

// Fills the fields of `img`, of which photometric and resunit come in as -1 and all others as zero.
// After a failure the record may hold arrays.
[[nodiscard]] kestu_error_t *read_tiff_directories(ByteSource &source, kestu_img_t &img);

} // namespace kestu
