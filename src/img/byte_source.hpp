// Bytes that are read at places of the reader's own choosing.
#pragma once

#include "kestu_error.h"

#include <cstdint>
#include <cstdio>
#include <span>

struct iovec;

namespace kestu {

// A file, or bytes in memory in its place.
class ByteSource {
  public:
    explicit ByteSource(const char *path) : path_(path) {}
    explicit ByteSource(std::span<const uint8_t> bytes) : bytes_(bytes), size_(bytes.size()) {}
    ~ByteSource();
    ByteSource(const ByteSource &) = delete;
    ByteSource &operator=(const ByteSource &) = delete;

    // Comes before all others. KESTU_ERR_OPEN for a file that cannot be opened.
    [[nodiscard]] kestu_error_t *open();

    // Reads the bytes at `offset`. KESTU_ERR_READ when there are fewer, KESTU_ERR_SEEK when the
    // offset cannot be reached: a pipe gives what it has from the front on, as long as nothing is
    // left out.
    [[nodiscard]] kestu_error_t *read_at(uint64_t offset, void *to, size_t bytes);

    // Finds out the size. KESTU_ERR_SEEK for what cannot be positioned in.
    [[nodiscard]] kestu_error_t *measure();
    uint64_t size() const { return size_; }
    bool holds(uint64_t offset, uint64_t bytes) const {
        return bytes == 0 || (offset <= size_ && bytes <= size_ - offset);
    }

    // Reads from `offset` straight into the segments. Returns how many bytes were moved, which may
    // be fewer than the segments have; 0 when none.
    size_t scatter(uint64_t offset, const iovec *segments, int count);

  private:
    size_t copy(uint64_t offset, void *to, size_t bytes) const;

    const char *path_ = nullptr; // null for bytes in memory
    std::FILE *stream_ = nullptr;
    uint64_t place_ = 0; // of the stream
    std::span<const uint8_t> bytes_;
    uint64_t size_ = 0;
};

} // namespace kestu
