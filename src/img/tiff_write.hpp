// Writing an image record as a TIFF file.
#pragma once

#include "img/output_file.hpp"
#include "kestu_img.h"

namespace kestu {

// Writes `img` to a file that has just been opened. KESTU_ERR_WRITE when it does not take all
// bytes.
[[nodiscard]] kestu_error_t *write_tiff(OutputFile &file, const kestu_img_t &img);

} // namespace kestu
