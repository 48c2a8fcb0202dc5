// The readers. They differ in what they do once the directories are read.
#include "img/tiff_read.hpp"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "img/tiff_directory.hpp"
#include "img/tiff_pixels.hpp"

namespace kestu {
namespace {

kestu_error_t *wrap_info(kestu_error_t *err) {
    return wrap(err, "Cannot read TIFF information from file.");
}

kestu_error_t *wrap_pixels(kestu_error_t *err) {
    return wrap(err, "Cannot read TIFF image.");
}

kestu_error_t *read_tags(ByteSource &source, kestu_img_t &img) {
    img = {};
    img.photometric = -1;
    img.resunit = -1;
    kestu_error_t *err = source.open();
    return err ? err : read_tiff_directories(source, img);
}

kestu_error_t *check_strips(const kestu_img_t &img) {
    if (img.n_strip_offsets == img.n_strip_bytes)
        return nullptr;
    return fail(KESTU_ERR_IMAGE_STRUCTURE, "Inconsistent number of strips [%d vs. %d]",
                img.n_strip_offsets, img.n_strip_bytes);
}

kestu_error_t *read_info(ByteSource &source, kestu_img_t &img) {
    kestu_error_t *err = read_tags(source, img);
    return err ? err : check_strips(img);
}

// Of a record whose tags have been read.
kestu_error_t *read_pixels(ByteSource &source, kestu_img_t &img) {
    if (img.photometric == -1)
        return fail(KESTU_ERR_IMAGE_STRUCTURE, "Unknown photometric interpretation");
    kestu_error_t *err = check_strips(img);
    return err ? err : read_tiff_pixels(source, img);
}

// Leaves a record that is read in full, or one without arrays.
kestu_error_t *finish(kestu_img_t &img, kestu_error_t *err) {
    if (err)
        kestu_img_free(&img);
    else
        img.type = 1;
    return err;
}

} // namespace

kestu_error_t *read_tiff_info(ByteSource &source, kestu_img_t &img) {
    const KeptErrno kept;
    return wrap_info(finish(img, read_info(source, img)));
}

kestu_error_t *read_tiff(ByteSource &source, kestu_img_t &img) {
    const KeptErrno kept;
    kestu_error_t *err = read_tags(source, img);
    if (!err)
        err = read_pixels(source, img);
    return wrap_pixels(finish(img, err));
}

// As if the two were called one after the other, with the tags read once.
kestu_error_t *read_image(ByteSource &source, kestu_img_t &img) {
    const KeptErrno kept;
    kestu_error_t *err = wrap_info(read_info(source, img));
    if (!err)
        err = wrap_pixels(read_pixels(source, img));
    finish(img, err);
    if (!err || err->code != KESTU_ERR_NOT_TIFF)
        return wrap(err, "Cannot read image.");
    kestu_error_clear(err);
    return fail(KESTU_ERR_UNKNOWN_IMAGE_TYPE);
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_img_read_tiff_info(const char *path, kestu_img_t *img) {
    ByteSource source(path);
    return read_tiff_info(source, *img);
}

kestu_error_t *kestu_img_read_tiff(const char *path, kestu_img_t *img) {
    ByteSource source(path);
    return read_tiff(source, *img);
}

kestu_error_t *kestu_img_read(const char *path, kestu_img_t *img) {
    ByteSource source(path);
    return read_image(source, *img);
}
