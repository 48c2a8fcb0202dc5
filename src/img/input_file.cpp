#include "img/input_file.hpp"

#include "frame/error.hpp"

#include <cerrno>

#include <sys/uio.h>

namespace kestu {

InputFile::InputFile(const char *path) : stream_(std::fopen(path, "rbe")) {}

InputFile::~InputFile() {
    if (stream_)
        std::fclose(stream_);
}

kestu_error_t *InputFile::measure() {
    if (fseeko(stream_, 0, SEEK_END) != 0)
        return fail(120033);
    const off_t end = ftello(stream_);
    if (end < 0)
        return fail(120033);
    size_ = static_cast<uint64_t>(end);
    return nullptr;
}

kestu_error_t *InputFile::read(void *to, size_t bytes) {
    return std::fread(to, 1, bytes, stream_) == bytes ? nullptr : fail(120031);
}

kestu_error_t *InputFile::read_at(uint64_t offset, void *to, size_t bytes) {
    if (fseeko(stream_, static_cast<off_t>(offset), SEEK_SET) != 0)
        return fail(120033);
    return read(to, bytes);
}

size_t InputFile::scatter(uint64_t offset, const iovec *segments, int count) {
    ssize_t got = 0;
    do {
        got = preadv(fileno(stream_), segments, count, static_cast<off_t>(offset));
    } while (got < 0 && errno == EINTR);
    return got > 0 ? static_cast<size_t>(got) : 0;
}

} // namespace kestu
