// Comparing keys.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestu {

template <typename Word>
Word load(const uint8_t *bytes) {
    Word word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// How many bytes at the beginning of two texts of `size` bytes are the same.
inline size_t same_bytes(const uint8_t *a, const uint8_t *b, size_t size) {
    size_t i = 0;
    for (; i + 8 <= size; i += 8)
        if (const uint64_t change = load<uint64_t>(a + i) ^ load<uint64_t>(b + i))
            return i + static_cast<size_t>(std::countr_zero(change)) / 8;
    while (i < size && a[i] == b[i])
        ++i;
    return i;
}

// Whether two texts of `size` bytes are the same. Most keys are too short for a call to pay.
inline bool are_same(const uint8_t *a, const uint8_t *b, size_t size) {
    if (size >= 8) {
        for (size_t i = 0; i + 8 < size; i += 8)
            if (load<uint64_t>(a + i) != load<uint64_t>(b + i))
                return false;
        return load<uint64_t>(a + size - 8) == load<uint64_t>(b + size - 8);
    }
    if (size >= 4)
        return load<uint32_t>(a) == load<uint32_t>(b) &&
               load<uint32_t>(a + size - 4) == load<uint32_t>(b + size - 4);
    return same_bytes(a, b, size) == size;
}

} // namespace kestu
