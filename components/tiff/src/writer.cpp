// Writing images, strip by strip.
#include "handle.hpp"

#include "base/kept_errno.hpp"
#include "kestu_format.h"
#include "kestu_lib.h"

#include <algorithm>
#include <cstring>

namespace kestu::tiff {
namespace {

constexpr uint64_t bytes_of_strip = 64 << 10;
constexpr uint64_t bytes_of_classic = 4000000000; // beyond, offsets may need 64 bits
constexpr double centimetres_per_inch = 2.54;

class Writer {
  public:
    [[nodiscard]] kestu_error_t *open(const char *path, const kestu_img_t &form,
                                      const kestu_tiff_write_options_t &options);
    [[nodiscard]] kestu_error_t *put(const void *row);
    [[nodiscard]] kestu_error_t *finish();

  private:
    [[nodiscard]] kestu_error_t *failure() {
        return kestu_error_create_i(KESTU_ERROR_ERROR, KESTU_ERR_WRITE, 0, nullptr, nullptr,
                                    handle_.take_complaint(KESTU_ERR_WRITE), nullptr);
    }
    bool describe(const kestu_img_t &form, const kestu_tiff_write_options_t &options);
    [[nodiscard]] kestu_error_t *write_strip();

    Handle handle_;
    Block strip_;
    uint64_t row_bytes_ = 0;
    uint32_t height_ = 0, rows_of_strip_ = 0;
    uint32_t rows_ = 0; // put so far
};

bool Writer::describe(const kestu_img_t &form, const kestu_tiff_write_options_t &options) {
    TIFF *tiff = handle_.tiff();
    char software[100];
    rpl_snprintf(software, sizeof software, "KESTU %s", kestu_version_string());
    const char *program = options.software ? options.software : software;
    bool set = TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(form.width)) &&
               TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height_) &&
               TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, form.bits[0]) &&
               TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) &&
               TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, form.photometric) &&
               TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
               TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows_of_strip_) &&
               TIFFSetField(tiff, TIFFTAG_COMPRESSION,
                            options.deflate ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE) &&
               TIFFSetField(tiff, TIFFTAG_SOFTWARE, program);
    if (options.deflate)
        set = set && TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    if (options.description)
        set = set && TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, options.description);
    if (form.xres > 0 && form.yres > 0) {
        const bool metric = form.resunit == RESUNIT_CENTIMETER;
        const double scale = metric ? 1 / centimetres_per_inch : 1;
        set = set &&
              TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT,
                           metric ? RESUNIT_CENTIMETER : RESUNIT_INCH) &&
              TIFFSetField(tiff, TIFFTAG_XRESOLUTION, form.xres * scale) &&
              TIFFSetField(tiff, TIFFTAG_YRESOLUTION, form.yres * scale);
    }
    return set;
}

kestu_error_t *Writer::open(const char *path, const kestu_img_t &form,
                            const kestu_tiff_write_options_t &options) {
    if ((form.bits[0] != 8 && form.bits[0] != 16) || form.samples != 1 ||
        (form.photometric != 0 && form.photometric != 1))
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr,
                               "The image is not grayscale of 8 or 16 bits.");
    if (form.width <= 0 || form.height <= 0)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "The image has no pixels.");
    height_ = static_cast<uint32_t>(form.height);
    row_bytes_ = static_cast<uint64_t>(form.width) * static_cast<uint64_t>(form.bits[0] / 8);
    const uint64_t fitting = std::max<uint64_t>(bytes_of_strip / row_bytes_, 1);
    rows_of_strip_ = static_cast<uint32_t>(std::min<uint64_t>(fitting, height_));
    kestu_error_t *err = strip_.make(rows_of_strip_ * row_bytes_, UINT64_MAX);
    if (err)
        return err;
    const bool large = row_bytes_ * height_ > bytes_of_classic;
    err = handle_.open_to_write(path, large ? "w8l" : "wl");
    return err || describe(form, options) ? err : failure();
}

kestu_error_t *Writer::write_strip() {
    const uint32_t strip = (rows_ - 1) / rows_of_strip_;
    const auto size = static_cast<tmsize_t>((rows_ - strip * rows_of_strip_) * row_bytes_);
    return TIFFWriteEncodedStrip(handle_.tiff(), strip, strip_.data(), size) == size ? nullptr
                                                                                     : failure();
}

kestu_error_t *Writer::put(const void *row) {
    if (rows_ == height_)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "The image has %u rows only.",
                               height_);
    std::memcpy(strip_.data() + rows_ % rows_of_strip_ * row_bytes_, row, row_bytes_);
    ++rows_;
    return rows_ % rows_of_strip_ == 0 || rows_ == height_ ? write_strip() : nullptr;
}

kestu_error_t *Writer::finish() {
    if (rows_ < height_)
        return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "%u rows of %u are missing.",
                               height_ - rows_, height_);
    if (!TIFFFlush(handle_.tiff()))
        return failure();
    return handle_.close() ? nullptr : failure();
}

} // namespace
} // namespace kestu::tiff

using namespace kestu::tiff;
using kestu::KeptErrno;

struct kestu_tiff_writer_t {
    Writer writer;
};

namespace {

constexpr const char *action = "Cannot write TIFF image.";

void destroy(kestu_tiff_writer_t **writer) {
    (*writer)->~kestu_tiff_writer_t();
    kestu_mem_free(*writer);
    *writer = nullptr;
}

} // namespace

kestu_error_t *kestu_tiff_create(const char *path, const kestu_img_t *form,
                                 const kestu_tiff_write_options_t *options,
                                 kestu_tiff_writer_t **out) {
    const KeptErrno kept;
    *out = nullptr;
    void *room = nullptr;
    kestu_error_t *err = kestu_mem_malloc(sizeof **out, &room);
    if (err)
        return wrap(err, action);
    *out = new (room) kestu_tiff_writer_t;
    const kestu_tiff_write_options_t none{};
    if ((err = (*out)->writer.open(path, *form, options ? *options : none)))
        destroy(out);
    return wrap(err, action);
}

kestu_error_t *kestu_tiff_put_row(kestu_tiff_writer_t *writer, const void *row) {
    const KeptErrno kept;
    return wrap(writer->writer.put(row), action);
}

kestu_error_t *kestu_tiff_finish(kestu_tiff_writer_t **writer) {
    const KeptErrno kept;
    if (!*writer)
        return nullptr;
    kestu_error_t *err = (*writer)->writer.finish();
    destroy(writer);
    return wrap(err, action);
}

kestu_error_t *kestu_tiff_write(const char *path, const kestu_img_t *img,
                                const kestu_tiff_write_options_t *options) {
    const KeptErrno kept;
    if (img->bits[0] == 8 ? !img->data8 : !img->data16)
        return wrap(KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr, "The image has no pixels."),
                    action);
    kestu_tiff_writer_t *writer = nullptr;
    kestu_error_t *err = kestu_tiff_create(path, img, options, &writer);
    for (int r = 0; !err && r < img->height; ++r)
        err = kestu_tiff_put_row(writer, img->bits[0] == 8
                                             ? static_cast<const void *>(img->data8[r])
                                             : static_cast<const void *>(img->data16[r]));
    if (!err)
        return kestu_tiff_finish(&writer);
    if (writer)
        destroy(&writer);
    return err;
}
