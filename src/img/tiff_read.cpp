// The readers. They differ in what they do once the directories are read.
#include "frame/error.hpp"
#include "img/file.hpp"
#include "img/tiff_directory.hpp"
#include "img/tiff_pixels.hpp"
#include "kestu_img.h"
#include "util/kept_errno.hpp"

using namespace kestu;

namespace {

constexpr int not_tiff = 120150;

kestu_error_t *check_strips(File &, kestu_img_t &img) {
    if (img.n_strip_offsets == img.n_strip_bytes)
        return nullptr;
    return fail(120152, "Inconsistent number of strips [%d vs. %d]", img.n_strip_offsets,
                img.n_strip_bytes);
}

kestu_error_t *read_pixels(File &file, kestu_img_t &img) {
    if (img.photometric == -1)
        return fail(120152, "Unknown photometric interpretation");
    kestu_error_t *err = check_strips(file, img);
    return err ? err : read_tiff_pixels(file, img);
}

kestu_error_t *read_open_file(File &file, kestu_img_t &img,
                              kestu_error_t *(*finish)(File &, kestu_img_t &)) {
    kestu_error_t *err = read_tiff_directories(file, img);
    if (!err)
        err = finish(file, img);
    if (err)
        kestu_img_free(&img);
    else
        img.type = 1;
    return err;
}

kestu_error_t *read_file(const char *path, kestu_img_t &img,
                         kestu_error_t *(*finish)(File &, kestu_img_t &)) {
    const KeptErrno kept;
    img = {};
    img.photometric = -1;
    img.resunit = -1;
    File file;
    kestu_error_t *err = file.open(path, "rbe");
    return err ? err : read_open_file(file, img, finish);
}

} // namespace

kestu_error_t *kestu_img_read_tiff_info(const char *path, kestu_img_t *img) {
    return wrap(read_file(path, *img, check_strips), "Cannot read TIFF information from file.");
}

kestu_error_t *kestu_img_read_tiff(const char *path, kestu_img_t *img) {
    return wrap(read_file(path, *img, read_pixels), "Cannot read TIFF image.");
}

kestu_error_t *kestu_img_read(const char *path, kestu_img_t *img) {
    constexpr const char *action = "Cannot read image.";
    if (kestu_error_t *err = kestu_img_read_tiff_info(path, img)) {
        if (err->code != not_tiff)
            return wrap(err, action);
        kestu_error_clear(err);
    }
    if (img->type != 1)
        return fail(120154);
    kestu_img_free(img);
    return wrap(kestu_img_read_tiff(path, img), action);
}
