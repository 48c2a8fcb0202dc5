#include "image/image.hpp"

#include "common/input_file.hpp"

namespace program {

namespace {

// The library names its own reasons.
kestu_error_t *in_words_for_images(kestu_error_t *err) {
    if (err && err->code == KESTU_ERR_UNKNOWN_IMAGE_TYPE)
        return in_words("is no TIFF image", err);
    if (err && err->code == KESTU_ERR_MEMORY_SIZE)
        return in_words("the image has no pixels", err);
    return err;
}

} // namespace

kestu_error_t *read_image(const std::string &path, Image &image) {
    return read_file(path, [&](const char *readable) {
        return in_words_for_images(kestu_img_read(readable, &image.record));
    });
}

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
