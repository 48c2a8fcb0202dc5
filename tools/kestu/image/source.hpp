// Pictures that are read row by row, from files of every kind that the program knows.
#pragma once

#include "image/image.hpp"

#include "kestu_tiff.h"

#include <functional>
#include <memory>
#include <string>

namespace program {

// A picture in gray of 8 or 16 bits, one row after another.
class Source {
  public:
    virtual ~Source() = default;

    // Stores the next row, bytes or uint16_t; the first one after the last.
    virtual kestu_error_t *next(void *row) = 0;

    // What the picture is: a record without matrices.
    const kestu_img_t &form() const { return form_; }
    int width() const { return form_.width; }
    int height() const { return form_.height; }
    int bits() const { return form_.bits[0]; }
    size_t row_bytes() const {
        return static_cast<size_t>(width()) * static_cast<size_t>(bits() / 8);
    }
    size_t levels() const { return size_t{1} << bits(); }

    // Of TIFF files that libtiff reads; null for others.
    virtual kestu_tiff_reader_t *tiff() const { return nullptr; }
    const kestu_tiff_info_t *info() const { return tiff() ? kestu_tiff_info(tiff()) : nullptr; }

    // What was done to make levels of gray of the file, in words; empty when levels are as stored.
    virtual std::string conversion() const { return ""; }

    // "PNG", "TIFF, big-endian".
    virtual std::string format() const = 0;

  protected:
    kestu_img_t form_{};
};

using UseSource = std::function<kestu_error_t *(Source &source)>;

// Opens the picture at `path`, or on standard input for "-", and hands it to `use`. Of TIFF files
// `page` is taken. Failures are told in words that help.
kestu_error_t *with_source(const std::string &path, uint32_t page, const UseSource &use);

// The same for a file whose name read_file has given.
kestu_error_t *with_readable(const char *readable, uint32_t page, const UseSource &use);

// Reads all of a picture into a record.
kestu_error_t *read_picture(const std::string &path, uint32_t page, Image &image);

// How a PNG file becomes a source; null, with the error stored, when it does not.
bool begins_as_png(const char *path);
std::unique_ptr<Source> open_png(const char *path, kestu_error_t **err);

} // namespace program
