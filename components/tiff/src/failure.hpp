// How the component makes its errors, and memory that is bounded and releases itself.
#pragma once

#include "kestu_error.h"
#include "kestu_error_codes.h"
#include "kestu_mem.h"

#include <cstdint>

namespace kestu::tiff {

// An error with a message of its own, above `cause` unless that is null.
#define KESTU_TIFF_FAIL(code, cause, ...)                                                          \
    kestu_error_createf_i(KESTU_ERROR_ERROR, (code), 0, nullptr, nullptr, (cause), __VA_ARGS__)

inline kestu_error_t *wrap(kestu_error_t *cause, const char *message) {
    return cause ? kestu_error_quick_wrap_i(0, nullptr, nullptr, cause, message) : nullptr;
}

// A size, or the largest one when it is larger still.
inline uint64_t product(uint64_t a, uint64_t b) {
    uint64_t result = 0;
    return __builtin_mul_overflow(a, b, &result) ? UINT64_MAX : result;
}

// Refuses what would take more memory than allowed.
[[nodiscard]] inline kestu_error_t *check_memory(uint64_t size, uint64_t limit) {
    if (size <= limit)
        return nullptr;
    return KESTU_TIFF_FAIL(KESTU_ERR_IMAGE_STRUCTURE, nullptr,
                           "%llu bytes of memory are needed, and %llu are the limit.",
                           static_cast<unsigned long long>(size),
                           static_cast<unsigned long long>(limit));
}

// A block of bytes.
class Block {
  public:
    Block() = default;
    ~Block() { kestu_mem_free(bytes_); }
    Block(const Block &) = delete;
    Block &operator=(const Block &) = delete;

    // Zeroed bytes in place of those that were there, no more than `limit`.
    [[nodiscard]] kestu_error_t *make(uint64_t size, uint64_t limit) {
        kestu_mem_free(bytes_);
        bytes_ = nullptr;
        if (kestu_error_t *err = check_memory(size, limit))
            return err;
        size_ = size;
        return kestu_mem_calloc(size > 0 ? size : 1, 1, &bytes_);
    }
    uint8_t *data() const { return bytes_; }
    uint64_t size() const { return size_; }

  private:
    uint8_t *bytes_ = nullptr;
    uint64_t size_ = 0;
};

} // namespace kestu::tiff
