// Writing to files.
#include "img/output_file.hpp"

#include "error/error.hpp"
#include "img/move_bytes.hpp"

#include <sys/uio.h>

namespace kestu {

OutputFile::~OutputFile() {
    if (stream_)
        std::fclose(stream_);
}

kestu_error_t *OutputFile::open(const char *path) {
    stream_ = std::fopen(path, "wbe");
    return stream_ ? nullptr : fail(KESTU_ERR_OPEN, "Cannot open file '%s'", path);
}

kestu_error_t *OutputFile::close(kestu_error_t *err) {
    const bool written = std::fclose(stream_) == 0;
    stream_ = nullptr;
    return err || written ? err : fail(KESTU_ERR_WRITE);
}

size_t OutputFile::gather(const iovec *segments, int count) {
    const int fd = fileno(stream_);
    return move_bytes([=] { return writev(fd, segments, count); });
}

} // namespace kestu
