#include "files/checksum.hpp"

#include "common/input_file.hpp"
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

FileSum sum_of_file(const std::string &path, SumKind kind, Progress &progress) {
    const bool standard_input = path == "-";
    const int fd = standard_input ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool is_missing = fd < 0 && errno == ENOENT;
    if (fd < 0)
        return {"", failed_to("open"), is_missing};
    Sum sum(kind);
    const bool complete = add_stream(sum, fd, progress);
    const std::string fault = complete ? "" : failed_to("read");
    if (!standard_input)
        close(fd);
    return {complete ? sum.digits() : "", fault, false};
}

// What cannot be read has nothing to sum.
std::optional<unsigned long long> size_of_file(const std::string &path) {
    struct stat state;
    const int failed = path == "-" ? fstat(STDIN_FILENO, &state) : stat(path.c_str(), &state);
    if (failed != 0 || S_ISDIR(state.st_mode))
        return 0;
    if (!S_ISREG(state.st_mode))
        return std::nullopt;
    return static_cast<unsigned long long>(state.st_size);
}

} // namespace program
