// Copies of few bytes, which are not worth a call of memcpy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kestu {

// As memcpy. Few bytes go as two words of one size, which overlap where their number is between.
inline void copy_bytes(char *to, const char *from, size_t n) {
    const auto two_words = [=](auto first) {
        auto last = first;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + n - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + n - sizeof last, &last, sizeof last);
    };
    using Block [[gnu::vector_size(16)]] = char;
    if (n > 32)
        std::memcpy(to, from, n);
    else if (n >= 16)
        two_words(Block{});
    else if (n >= 8)
        two_words(uint64_t{});
    else if (n >= 4)
        two_words(uint32_t{});
    else if (n >= 2)
        two_words(uint16_t{});
    else if (n == 1)
        *to = *from;
}

} // namespace kestu
