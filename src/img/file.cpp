#include "img/file.hpp"

#include "error/error.hpp"

#include <cerrno>

#include <sys/uio.h>

namespace kestu {
namespace {

// Calls until the call is not interrupted by a signal.
template <typename Move>
size_t move_bytes(Move move) {
    ssize_t moved = 0;
    do {
        moved = move();
    } while (moved < 0 && errno == EINTR);
    return moved > 0 ? static_cast<size_t>(moved) : 0;
}

} // namespace

File::~File() {
    if (stream_)
        std::fclose(stream_);
}

kestu_error_t *File::open(const char *path, const char *mode) {
    stream_ = std::fopen(path, mode);
    return stream_ ? nullptr : fail(120030, "Cannot open file '%s'", path);
}

kestu_error_t *File::close(kestu_error_t *err) {
    const bool written = std::fclose(stream_) == 0;
    stream_ = nullptr;
    return err || written ? err : fail(120032);
}

kestu_error_t *File::measure() {
    if (fseeko(stream_, 0, SEEK_END) != 0)
        return fail(120033);
    const off_t end = ftello(stream_);
    if (end < 0)
        return fail(120033);
    size_ = static_cast<uint64_t>(end);
    return nullptr;
}

kestu_error_t *File::read(void *to, size_t bytes) {
    return std::fread(to, 1, bytes, stream_) == bytes ? nullptr : fail(120031);
}

kestu_error_t *File::read_at(uint64_t offset, void *to, size_t bytes) {
    if (fseeko(stream_, static_cast<off_t>(offset), SEEK_SET) != 0)
        return fail(120033);
    return read(to, bytes);
}

size_t File::scatter(uint64_t offset, const iovec *segments, int count) {
    const int fd = fileno(stream_);
    return move_bytes([=] { return preadv(fd, segments, count, static_cast<off_t>(offset)); });
}

size_t File::gather(const iovec *segments, int count) {
    const int fd = fileno(stream_);
    return move_bytes([=] { return writev(fd, segments, count); });
}

} // namespace kestu
