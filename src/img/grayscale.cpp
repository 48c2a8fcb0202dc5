// The check of an image that is to be measured.
#include "img/grayscale.hpp"

#include "error/error.hpp"
#include "img/samples.hpp"

namespace kestu {

kestu_error_t *check_grayscale(const kestu_img_t &img) {
    if (img.samples != 1)
        return fail(0, "The image is not grayscale.");
    if (img.photometric != 0 && img.photometric != 1)
        // Kept: the spelling. Relied on by: programs that compare messages.
        return fail(0, "The photointerpretation is not sutable: %d", img.photometric);
    if (!with_samples(img, [](auto) { return true; }))
        return fail(0, "The image is neither 16-bit nor 8-bit grayscale.");
    if (pixels_of(img) > 0 && !with_samples(img, [](auto rows) { return rows != nullptr; }))
        return fail(0, "The image has no pixels.");
    return nullptr;
}

} // namespace kestu
