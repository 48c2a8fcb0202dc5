// The image record itself.
#include "kestu_img.h"

#include "base/kept_errno.hpp"
#include "kestu_mem.h"

namespace {

constexpr double mm_per_inch = 25.4;

template <typename Pointer>
void free_block(Pointer &block) {
    kestu_mem_free(block);
    block = nullptr;
}

template <typename Sample>
void free_matrix(kestu_img_t &img, Sample **&rows) {
    if (rows)
        kestu_mem_matrix_free(rows, sizeof(Sample), 0, img.height - 1, 0, img.width - 1);
    rows = nullptr;
}

} // namespace

void kestu_img_free(kestu_img_t *img) {
    const kestu::KeptErrno kept;
    free_matrix(*img, img->data8);
    free_matrix(*img, img->data16);
    free_block(img->strip_offsets);
    free_block(img->strip_bytes);
    free_block(img->software);
}

kestu_error_t *kestu_img_get_resmm(const kestu_img_t *img, double *xmm, double *ymm) {
    *xmm = img->xres / mm_per_inch;
    *ymm = img->yres / mm_per_inch;
    return nullptr;
}
