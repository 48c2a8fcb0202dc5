#include "files/checksum.hpp"

#include "common/progress.hpp"
#include "common/text.hpp"

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace program {
namespace {

// Fits the cache of the processor; larger reads are no faster.
constexpr size_t buffer_size = size_t{256} * 1024;

// The bytes of a regular file; 0 when nobody knows how many there are.
unsigned long long size_of(int fd) {
    struct stat state;
    return fstat(fd, &state) == 0 && S_ISREG(state.st_mode)
               ? static_cast<unsigned long long>(state.st_size)
               : 0;
}

bool add_stream(Sum &sum, int fd, Progress &progress) {
    std::vector<unsigned char> buffer(buffer_size);
    for (;;) {
        const ssize_t got = read(fd, buffer.data(), buffer.size());
        if (got == 0)
            return true;
        if (got < 0 && errno != EINTR)
            return false;
        if (got > 0) {
            sum.add(buffer.data(), static_cast<size_t>(got));
            progress.advance(static_cast<size_t>(got));
        }
    }
}

} // namespace

void Sum::add(const unsigned char *data, size_t size) {
    switch (kind_) {
    case SumKind::sha1:
        kestu_sha1_update(data, static_cast<uint32_t>(size), &sha1_);
        break;
    case SumKind::crc32:
        crc_ = kestu_util_crc32(crc_, data, size);
        break;
    case SumKind::crc16:
        crc_ = kestu_util_crc16(crc_, data, size);
        break;
    }
}

std::string Sum::digits() {
    if (kind_ == SumKind::crc32)
        return text("%08x", crc_);
    if (kind_ == SumKind::crc16)
        return text("%04x", crc_);
    unsigned char digest[KESTU_SHA1_SIZE];
    kestu_sha1_final(digest, &sha1_);
    std::string result;
    for (const unsigned char byte : digest)
        result += text("%02x", byte);
    return result;
}

std::optional<std::string> sum_of_file(const std::string &path, SumKind kind) {
    const bool standard_input = path == "-";
    const int fd = standard_input ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    Sum sum(kind);
    Progress progress(path, size_of(fd), "byte");
    const bool complete = add_stream(sum, fd, progress);
    const int reason = errno;
    if (!standard_input)
        close(fd);
    errno = reason;
    return complete ? std::optional(sum.digits()) : std::nullopt;
}

} // namespace program
