// The ways to tell whether bytes are well-formed UTF-8. All give the same results.
#pragma once

#include "base/dispatch.hpp"

#include <cstddef>

namespace kestu {

struct Utf8Kernel {
    const char *name;
    bool CpuFeatures::*needs;
    bool (*is_valid)(const unsigned char *text, size_t size);
};

extern Dispatch<Utf8Kernel> utf8_dispatch;

// The size of the well-formed character at the beginning of `size` bytes; 0 when there is none.
// (Unicode 15, table 3-7.)
inline size_t utf8_size(const unsigned char *text, size_t size) {
    const auto continues = [&](size_t i, unsigned from = 0x80, unsigned to = 0xBF) {
        return i < size && text[i] >= from && text[i] <= to;
    };
    const unsigned first = size > 0 ? text[0] : 0xFF;
    if (first < 0x80)
        return 1;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    if (first < 0xE0)
        return continues(1) ? 2 : 0;
    if (first < 0xF0) {
        const bool is_second =
            continues(1, first == 0xE0 ? 0xA0 : 0x80, first == 0xED ? 0x9F : 0xBF);
        return is_second && continues(2) ? 3 : 0;
    }
    const bool is_second = continues(1, first == 0xF0 ? 0x90 : 0x80, first == 0xF4 ? 0x8F : 0xBF);
    return is_second && continues(2) && continues(3) ? 4 : 0;
}

bool utf8_valid_256(const unsigned char *text, size_t size);

} // namespace kestu
