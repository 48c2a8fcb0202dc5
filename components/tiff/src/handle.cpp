#include "handle.hpp"

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestu::tiff {
namespace {

// Keeps the first message only: damage makes many.
template <size_t size>
int keep(char (&text)[size], const char *module, const char *format, va_list args) {
    if (text[0])
        return 1;
    int at = module ? std::snprintf(text, size, "%.60s: ", module) : 0;
    std::vsnprintf(text + at, size - static_cast<size_t>(at), format, args);
    return 1;
}

bool begins_as_tiff(int fd) {
    char head[4] = {};
    if (pread(fd, head, sizeof head, 0) != sizeof head)
        return false;
    const bool little = head[0] == 'I' && head[1] == 'I' && (head[2] == 42 || head[2] == 43);
    const bool big = head[0] == 'M' && head[1] == 'M' && (head[3] == 42 || head[3] == 43);
    return little || big;
}

} // namespace

Handle::~Handle() {
    close();
}

bool Handle::close() {
    const bool had_tiff = tiff_ != nullptr;
    if (tiff_)
        TIFFCleanup(tiff_);
    tiff_ = nullptr;
    const bool closed = fd_ < 0 || ::close(fd_) == 0;
    fd_ = -1;
    return closed && (!had_tiff || !complained());
}

int Handle::on_error(TIFF *, void *handle, const char *module, const char *format, va_list args) {
    return keep(static_cast<Handle *>(handle)->error_, module, format, args);
}

int Handle::on_warning(TIFF *, void *handle, const char *module, const char *format, va_list args) {
    return keep(static_cast<Handle *>(handle)->warning_, module, format, args);
}

kestu_error_t *Handle::take_complaint(int code) {
    if (!complained())
        return nullptr;
    kestu_error_t *err = KESTU_TIFF_FAIL(code, nullptr, "libtiff: %s", error_);
    forget_complaint();
    return err;
}

kestu_error_t *Handle::attach(const char *path, const char *mode, uint64_t max_block) {
    struct stat state {};
    if (fd_ < 0 || fstat(fd_, &state) != 0)
        return KESTU_TIFF_FAIL(KESTU_ERR_OPEN, nullptr, "Cannot open file '%s'", path);
    file_size_ = static_cast<uint64_t>(state.st_size);
    if (mode[0] == 'r' && S_ISDIR(state.st_mode))
        return KESTU_TIFF_FAIL(KESTU_ERR_READ, nullptr, "'%s' is a folder.", path);
    if (mode[0] == 'r' && !begins_as_tiff(fd_))
        return KESTU_TIFF_FAIL(KESTU_ERR_NOT_TIFF, nullptr, "'%s' is not TIFF.", path);
    TIFFOpenOptions *options = TIFFOpenOptionsAlloc();
    if (!options)
        return KESTU_TIFF_FAIL(KESTU_ERR_NO_MEMORY, nullptr, "Failed to allocate memory.");
    const auto largest = static_cast<uint64_t>(PTRDIFF_MAX);
    TIFFOpenOptionsSetMaxSingleMemAlloc(
        options, static_cast<tmsize_t>(max_block < largest ? max_block : largest));
    TIFFOpenOptionsSetErrorHandlerExtR(options, on_error, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, on_warning, this);
    tiff_ = TIFFFdOpenExt(fd_, path, mode, options);
    TIFFOpenOptionsFree(options);
    if (tiff_)
        return nullptr;
    return failure(mode[0] == 'r' ? KESTU_ERR_IMAGE_STRUCTURE : KESTU_ERR_WRITE,
                   "The structure of the file cannot be used.");
}

// A file that shrinks while it is mapped would end the process, so it is not mapped.
kestu_error_t *Handle::open_to_read(const char *path, uint64_t max_block) {
    fd_ = ::open(path, O_RDONLY | O_CLOEXEC);
    return attach(path, "rm", max_block);
}

kestu_error_t *Handle::open_to_write(const char *path, const char *mode) {
    fd_ = ::open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return attach(path, mode, UINT64_MAX);
}

} // namespace kestu::tiff
