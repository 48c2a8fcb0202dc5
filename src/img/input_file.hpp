// A file that is read at places of its own choosing.
#pragma once

#include "kestu_error.h"

#include <cstdint>
#include <cstdio>

#include <sys/types.h>

struct iovec;

namespace kestu {

class InputFile {
  public:
    explicit InputFile(const char *path);
    ~InputFile();
    InputFile(const InputFile &) = delete;
    InputFile &operator=(const InputFile &) = delete;

    bool is_open() const { return stream_ != nullptr; }

    // Finds out the size. 120033 for what cannot be positioned in.
    kestu_error_t *measure();
    uint64_t size() const { return size_; }
    bool holds(uint64_t offset, uint64_t bytes) const {
        return bytes == 0 || (offset <= size_ && bytes <= size_ - offset);
    }

    // Reads the next bytes, or those at `offset`. 120031 when there are fewer, 120033 when the
    // offset cannot be reached.
    kestu_error_t *read(void *to, size_t bytes);
    kestu_error_t *read_at(uint64_t offset, void *to, size_t bytes);

    // Reads from `offset` straight into the segments, past the stream's buffer and position.
    // Returns how many bytes came, which may be fewer than the segments take; 0 when none.
    size_t scatter(uint64_t offset, const iovec *segments, int count);

  private:
    std::FILE *stream_;
    uint64_t size_ = 0;
};

} // namespace kestu
