#include "image/image.hpp"

namespace program {

kestu_error_t *make_black(kestu_img_t &image, int width, int height, int bits) {
    image.type = 1;
    image.width = width;
    image.height = height;
    image.samples = 1;
    image.bits[0] = bits;
    image.photometric = 1;
    if (bits == 8)
        return kestu_mem_matrix_alloc(&image.data8, 1, 0, height - 1, 0, width - 1);
    return kestu_mem_matrix_alloc(&image.data16, 2, 0, height - 1, 0, width - 1);
}

} // namespace program
