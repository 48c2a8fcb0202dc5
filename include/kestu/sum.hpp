// Checksums.
//
//     assert(kestu::crc32("123456789") == 0xCBF43926);
//     std::vector<int> numbers = {1, 2, 3};
//     kestu::Sha1 sum;
//     sum.update("abc");
//     sum.update(numbers);
//     std::array<std::byte, 20> digest = sum.digest();
#pragma once

#include "../kestu_sum.h"
#include "base.hpp"

#include <array>
#include <cstddef>
#include <ranges>
#include <span>
#include <string_view>
#include <type_traits>

namespace kestu {
inline namespace KESTU_CPP {

// The bytes of a text, a span, a vector or another row of plain values.
class Bytes {
  public:
    // The bytes of a text.
    Bytes(std::string_view text) noexcept : data_(text.data()), size_(text.size()) {}

    // The bytes of a text that ends with a zero byte, which does not count.
    Bytes(const char *text) noexcept : Bytes(std::string_view(text)) {}

    // The bytes of a row of plain values.
    template <std::ranges::contiguous_range Row>
    requires(std::is_trivially_copyable_v<std::ranges::range_value_t<Row>> && !std::is_array_v<Row>)
        Bytes(const Row &row)
    noexcept
        : data_(std::ranges::data(row)),
          size_(std::ranges::size(row) * sizeof(std::ranges::range_value_t<Row>)) {}

    // Where they are.
    const unsigned char *data() const noexcept { return static_cast<const unsigned char *>(data_); }

    // How many there are.
    size_t size() const noexcept { return size_; }

  private:
    const void *data_;
    size_t size_;
};

// The CRC-32 of the bytes.
inline uint32_t crc32(Bytes bytes) {
    return kestu_util_crc32(0, bytes.data(), bytes.size());
}

// The CRC-32 of what `crc` is of and the bytes together.
inline uint32_t crc32(Bytes bytes, uint32_t crc) {
    return bytes.data() ? kestu_util_crc32(crc, bytes.data(), bytes.size()) : crc;
}

// The CRC-32C of the bytes.
inline uint32_t crc32c(Bytes bytes) {
    return kestu_util_crc32c(0, bytes.data(), bytes.size());
}

// The CRC-32C of what `crc` is of and the bytes together.
inline uint32_t crc32c(Bytes bytes, uint32_t crc) {
    return bytes.data() ? kestu_util_crc32c(crc, bytes.data(), bytes.size()) : crc;
}

// The CRC-16 of the bytes.
inline uint16_t crc16(Bytes bytes) {
    return kestu_util_crc16(0, bytes.data(), bytes.size());
}

// The CRC-16 of what `crc` is of and the bytes together.
inline uint16_t crc16(Bytes bytes, uint16_t crc) {
    return bytes.data() ? kestu_util_crc16(crc, bytes.data(), bytes.size()) : crc;
}

// A SHA-1 under way.
class Sha1 {
  public:
    // A digest.
    using Digest = std::array<std::byte, KESTU_SHA1_SIZE>;

    // Begins.
    Sha1() { kestu_sha1_init(&context_); }

    // Adds bytes.
    Sha1 &update(Bytes bytes) {
        kestu_sha1_update64(bytes.data(), bytes.size(), &context_);
        return *this;
    }

    // The digest of all that was added, after which it begins anew.
    Digest digest() {
        Digest digest;
        kestu_sha1_final(reinterpret_cast<unsigned char *>(digest.data()), &context_);
        kestu_sha1_init(&context_);
        return digest;
    }

  private:
    kestu_sha1_t context_;
};

// The SHA-1 of the bytes.
inline Sha1::Digest sha1(Bytes bytes) {
    return Sha1().update(bytes).digest();
}

// The digits of a digest.
inline std::string to_hex(std::span<const std::byte> digest) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (std::byte byte : digest) {
        text += digits[std::to_integer<unsigned>(byte >> 4)];
        text += digits[std::to_integer<unsigned>(byte & std::byte{15})];
    }
    return text;
}

} // namespace KESTU_CPP
} // namespace kestu
