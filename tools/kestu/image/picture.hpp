// Pictures that the program makes, written row by row.
#pragma once

#include "kestu_img.h"

#include <functional>
#include <memory>
#include <string>

namespace program {

// How pictures are written.
struct PictureOptions {
    std::string compress = "none"; // or deflate
    std::string description;       // what the picture says of itself
    bool force = false;            // replaces files
};

class PictureWriter {
  public:
    virtual ~PictureWriter() = default;
    virtual kestu_error_t *put(const void *row) = 0;
    virtual kestu_error_t *finish() = 0;
};

using PutRows = std::function<kestu_error_t *(PictureWriter &writer)>;

// Makes the picture at `path`, PNG when its name ends in ".png" and TIFF otherwise, of the size,
// depth and resolution of `form`. `put` writes all its rows. The file appears when it is whole, in
// place of another one only by force; it may be the one that `put` reads.
kestu_error_t *write_picture(const std::string &path, const kestu_img_t &form,
                             const PictureOptions &options, const PutRows &put);

// The same for a picture that is in memory.
kestu_error_t *write_picture(const std::string &path, const kestu_img_t &image,
                             const PictureOptions &options);

// Refuses a file that is there already.
kestu_error_t *check_new(const std::string &path, bool force);

// A PNG file that is written; null, with the error stored, when it cannot be.
std::unique_ptr<PictureWriter> create_png(const char *path, const kestu_img_t &form,
                                          const PictureOptions &options, kestu_error_t **err);

} // namespace program
