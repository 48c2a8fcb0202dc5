// A file that is read at places of its own choosing or written from front to back.
#pragma once

#include "kestu_error.h"

#include <cstdint>
#include <cstdio>

struct iovec;

namespace kestu {

class File {
  public:
    File() = default;
    ~File();
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    // Opens the file at `path` in a mode of fopen. 120030 when it cannot be opened.
    [[nodiscard]] kestu_error_t *open(const char *path, const char *mode);

    // Closes what was written. Returns `err`, or without one 120032 when the system only now
    // reports that it could not write.
    [[nodiscard]] kestu_error_t *close(kestu_error_t *err);

    // Finds out the size. 120033 for what cannot be positioned in.
    [[nodiscard]] kestu_error_t *measure();
    uint64_t size() const { return size_; }
    bool holds(uint64_t offset, uint64_t bytes) const {
        return bytes == 0 || (offset <= size_ && bytes <= size_ - offset);
    }

    // Reads the next bytes, or those at `offset`. 120031 when there are fewer, 120033 when the
    // offset cannot be reached.
    [[nodiscard]] kestu_error_t *read(void *to, size_t bytes);
    [[nodiscard]] kestu_error_t *read_at(uint64_t offset, void *to, size_t bytes);

    // Reads from `offset` straight into the segments, or appends what they hold, without the
    // stream's buffer and position. Returns how many bytes were moved, which may be fewer than the
    // segments have; 0 when none.
    size_t scatter(uint64_t offset, const iovec *segments, int count);
    size_t gather(const iovec *segments, int count);

  private:
    std::FILE *stream_ = nullptr;
    uint64_t size_ = 0;
};

} // namespace kestu
