// The rows of an image: making them, and moving through their bytes as if they were one piece.
#pragma once

#include "error/error.hpp"
#include "kestu_mem.h"

#include <algorithm>
#include <cstdint>

namespace kestu {

// As kestu_mem_matrix_alloc for rows and columns that begin at 0, but rows not made after a failure
// are null, so that the matrix can be released; and the first `filled` rows, which the caller
// overwrites, are not zeroed.
template <typename Sample>
[[nodiscard]] kestu_error_t *allocate_rows(Sample **&matrix, int32_t height, int32_t width,
                                           uint64_t filled) {
    constexpr const char *action = "Cannot allocate matrix.";
    const auto rows = static_cast<size_t>(int64_t{height});
    const auto columns = static_cast<size_t>(int64_t{width});
    if (kestu_error_t *err = kestu_mem_malloc(rows * sizeof(Sample *), &matrix))
        return wrap(err, action);
    std::fill_n(matrix, rows, nullptr);
    for (size_t r = 0; r < rows; ++r) {
        kestu_error_t *err = r < filled ? kestu_mem_malloc(columns * sizeof(Sample), &matrix[r])
                                        : kestu_mem_calloc(columns, sizeof(Sample), &matrix[r]);
        if (err)
            return wrap(err, action);
    }
    return nullptr;
}

// Enough rows a call that the calls do not matter, few enough for the stack.
constexpr int segments_per_call = 256;
using RowSegments = iovec[segments_per_call];

// A place in the rows that goes on in the next row when one ends.
template <typename Sample>
class RowCursor {
  public:
    RowCursor(Sample *const *rows, size_t height, size_t width)
        : rows_(rows), height_(height), row_bytes_(width * sizeof(Sample)) {}

    bool at_end() const { return row_ == height_; }

    // Where the next bytes are, `bytes` at most. Returns the number of segments.
    int next(RowSegments &segments, uint64_t bytes) const {
        size_t row = row_;
        size_t column = column_;
        int count = 0;
        for (; count < segments_per_call && bytes > 0 && row < height_; ++count, ++row) {
            const auto length = std::min<uint64_t>(bytes, row_bytes_ - column);
            segments[count] = {reinterpret_cast<char *>(rows_[row]) + column, length};
            bytes -= length;
            column = 0;
        }
        return count;
    }

    void advance(size_t bytes) {
        column_ += bytes;
        row_ += column_ / row_bytes_;
        column_ %= row_bytes_;
    }

  private:
    Sample *const *rows_;
    size_t height_;
    size_t row_bytes_;
    size_t row_ = 0;
    size_t column_ = 0; // in bytes
};

} // namespace kestu
