#include "img/grayscale.hpp"

#include "error/error.hpp"
#include "img/rows.hpp"

namespace kestu {

kestu_error_t *check_grayscale(const kestu_img_t &img) {
    if (img.samples != 1)
        return fail(0, "The image is not grayscale.");
    if (img.photometric != 0 && img.photometric != 1)
        return fail(0, "The photointerpretation is not sutable: %d", img.photometric);
    if (img.bits[0] != 8 && img.bits[0] != 16)
        return fail(0, "The image is neither 16-bit nor 8-bit grayscale.");
    const bool has_pixels = img.bits[0] == 8 ? img.data8 != nullptr : img.data16 != nullptr;
    if (pixels_of(img) > 0 && !has_pixels)
        return fail(0, "The image has no pixels.");
    return nullptr;
}

} // namespace kestu
