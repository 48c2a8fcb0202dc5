// Reading from files and from memory.
#include "img/byte_source.hpp"

#include "error/error.hpp"
#include "img/move_bytes.hpp"

#include <algorithm>

#include <sys/uio.h>

namespace kestu {

ByteSource::~ByteSource() {
    if (stream_)
        std::fclose(stream_);
}

kestu_error_t *ByteSource::open() {
    if (!path_)
        return nullptr;
    stream_ = std::fopen(path_, "rbe");
    return stream_ ? nullptr : fail(KESTU_ERR_OPEN, "Cannot open file '%s'", path_);
}

kestu_error_t *ByteSource::read_at(uint64_t offset, void *to, size_t bytes) {
    if (!path_)
        return copy(offset, to, bytes) == bytes ? nullptr : fail(KESTU_ERR_READ);
    if (offset != place_ && fseeko(stream_, static_cast<off_t>(offset), SEEK_SET) != 0)
        return fail(KESTU_ERR_SEEK);
    const size_t got = std::fread(to, 1, bytes, stream_);
    place_ = offset + got;
    return got == bytes ? nullptr : fail(KESTU_ERR_READ);
}

kestu_error_t *ByteSource::measure() {
    if (!path_)
        return nullptr;
    if (fseeko(stream_, 0, SEEK_END) != 0)
        return fail(KESTU_ERR_SEEK);
    const off_t end = ftello(stream_);
    if (end < 0)
        return fail(KESTU_ERR_SEEK);
    size_ = place_ = static_cast<uint64_t>(end);
    return nullptr;
}

size_t ByteSource::scatter(uint64_t offset, const iovec *segments, int count) {
    if (path_) {
        const int fd = fileno(stream_);
        return move_bytes([=] { return preadv(fd, segments, count, static_cast<off_t>(offset)); });
    }
    size_t moved = 0;
    for (int i = 0; i < count; ++i)
        moved += copy(offset + moved, segments[i].iov_base, segments[i].iov_len);
    return moved;
}

// As many of the bytes as there are.
size_t ByteSource::copy(uint64_t offset, void *to, size_t bytes) const {
    const auto from = std::min<uint64_t>(offset, bytes_.size());
    const auto there = std::min<uint64_t>(bytes, bytes_.size() - from);
    std::copy_n(bytes_.data() + from, there, static_cast<uint8_t *>(to));
    return there;
}

} // namespace kestu
