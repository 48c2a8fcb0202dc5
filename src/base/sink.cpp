// Storing formatted text.
#include "base/sink.hpp"

namespace kestu {

// Most texts are a few bytes and not worth a call of memcpy: they go as two words of one size,
// which overlap where the number of bytes is between.
void Sink::copy(char *to, const char *from, size_t n) {
    const auto two_words = [=](auto first) {
        auto last = first;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + n - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + n - sizeof last, &last, sizeof last);
    };
    if (n > 16)
        std::memcpy(to, from, n);
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
