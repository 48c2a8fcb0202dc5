// UTF-8 encoding of single characters.
#pragma once

#include <cstddef>
#include <string_view>

namespace kestu {

// One character in UTF-8. What is no Unicode scalar value becomes U+FFFD, the replacement
// character.
class Utf8Char {
  public:
    explicit Utf8Char(char32_t c) {
        if (c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
            c = 0xFFFD;
        if (c < 0x80) {
            put(c);
        } else if (c < 0x800) {
            put(0xC0 | c >> 6);
            put(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            put(0xE0 | c >> 12);
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        }
    }

    std::string_view view() const { return {bytes_, size_}; }

  private:
    void put(char32_t byte) { bytes_[size_++] = static_cast<char>(byte); }

    char bytes_[4];
    size_t size_ = 0;
};

} // namespace kestu
