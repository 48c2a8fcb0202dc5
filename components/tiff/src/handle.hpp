// An open TIFF file: libtiff's handle, and what libtiff has said about it.
#pragma once

#include "failure.hpp"
#include "kestu_tiff.h"

#include <tiffio.h>

#include <cstdarg>

namespace kestu::tiff {

class Handle {
  public:
    Handle() = default;
    ~Handle();
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    // `mode` is that of libtiff. No block of libtiff's own exceeds `max_block` bytes.
    [[nodiscard]] kestu_error_t *open_to_read(const char *path, uint64_t max_block);
    [[nodiscard]] kestu_error_t *open_to_write(const char *path, const char *mode);

    // Writes what is left and closes; false when libtiff or the system failed.
    bool close();

    TIFF *tiff() const { return tiff_; }
    int fd() const { return fd_; }
    uint64_t file_size() const { return file_size_; }
    const char *warning() const { return warning_; }

    // Whether libtiff has reported an error, which it does for some without failing.
    bool complained() const { return error_[0] != 0; }

    // libtiff's first error since the last one that was taken, as a chain; null without one.
    kestu_error_t *take_complaint(int code);

    // The same as the cause of a failure of our own.
    kestu_error_t *failure(int code, const char *message) {
        return KESTU_TIFF_FAIL(code, take_complaint(code), "%s", message);
    }
    void forget_complaint() { error_[0] = 0; }

  private:
    [[nodiscard]] kestu_error_t *attach(const char *path, const char *mode, uint64_t max_block);
    static int on_error(TIFF *, void *handle, const char *module, const char *format, va_list args);
    static int on_warning(TIFF *, void *handle, const char *module, const char *format,
                          va_list args);

    TIFF *tiff_ = nullptr;
    int fd_ = -1;
    uint64_t file_size_ = 0;
    char error_[200] = "";
    char warning_[sizeof kestu_tiff_info_t::warning] = "";
};

} // namespace kestu::tiff
