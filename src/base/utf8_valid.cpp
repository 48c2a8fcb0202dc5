// Choosing how UTF-8 is validated, and the way that every processor can go.
#include "base/utf8_valid.hpp"

#include <cstdint>
#include <cstring>

namespace kestu {
namespace {

// Eight ASCII characters at a time, and all others one by one.
bool utf8_valid_plain(const unsigned char *text, size_t size) {
    constexpr uint64_t top_bits = 0x8080808080808080;
    while (size > 0) {
        uint64_t word = 0;
        if (size >= sizeof word) {
            std::memcpy(&word, text, sizeof word);
            if ((word & top_bits) == 0) {
                text += sizeof word;
                size -= sizeof word;
                continue;
            }
        }
        const size_t character = utf8_size(text, size);
        if (character == 0)
            return false;
        text += character;
        size -= character;
    }
    return true;
}

constexpr Utf8Kernel kernels[] = {
    {"plain", nullptr, utf8_valid_plain},
    {"registers_256", &CpuFeatures::avx2, utf8_valid_256},
};

constexpr Utf8Kernel first_use = {"not_chosen", nullptr,
                                  [](const unsigned char *text, size_t size) {
                                      return utf8_dispatch.choose().is_valid(text, size);
                                  }};

} // namespace

constinit Dispatch<Utf8Kernel> utf8_dispatch{kernels, first_use};

} // namespace kestu
