// Numbers as most texts hold them, read faster than by the C library and with its results.
#pragma once

#include <bit>
#include <cstring>
#include <limits>
#include <optional>

#include <fast_float/fast_float.h>
#include <langinfo.h>
#include <xmmintrin.h>

namespace kestu {

constexpr uint64_t in_each_byte = 0x0101010101010101;

template <typename Word>
uint64_t load(const char *s) {
    Word word = 0;
    std::memcpy(&word, s, sizeof word);
    return word;
}

// The first bytes of `n`, at least one, up to eight.
inline uint64_t first_bytes(const char *s, size_t n) {
    if (n >= 8)
        return load<uint64_t>(s);
    if (n >= 4)
        return load<uint32_t>(s) | load<uint32_t>(s + n - 4) << (8 * (n - 4));
    if (n >= 2)
        return load<uint16_t>(s) | load<uint16_t>(s + n - 2) << (8 * (n - 2));
    return load<uint8_t>(s);
}

// Digits, eight at a time.
class Digits {
  public:
    // Takes the next eight bytes, of which the first is the lowest of `bytes`.
    void add(uint64_t bytes) {
        uint64_t digits = bytes - zeros;
        others_ |= digits | (bytes + (0x80 - '9' - 1) * in_each_byte);
        digits = digits * 10 + (digits >> 8); // pairs, in every other byte
        constexpr uint64_t two_pairs = 0x000000FF000000FF;
        const uint64_t eight = ((digits & two_pairs) * (uint64_t{1000000} << 32 | 100) +
                                (digits >> 16 & two_pairs) * (uint64_t{10000} << 32 | 1)) >>
                               32;
        value_ = value_ * 100000000 + static_cast<uint32_t>(eight);
    }

    // Takes the lowest `n` bytes, up to eight, as the first digits.
    void add_first(uint64_t bytes, size_t n) {
        const size_t missing = 8 * (8 - n);
        add(n > 0 ? bytes << missing | zeros >> 8 * (n - 1) >> 8 : zeros);
    }

    bool only() const { return (others_ & 0x80 * in_each_byte) == 0; }
    uint64_t value() const { return value_; }

  private:
    static constexpr uint64_t zeros = '0' * in_each_byte;

    uint64_t others_ = 0; // a top bit is set when a byte was no digit
    uint64_t value_ = 0;
};

inline bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Whether the processor rounds to the nearest, as what follows takes for granted.
inline bool rounds_to_nearest() {
    return (_mm_getcsr() & _MM_ROUND_MASK) == _MM_ROUND_NEAREST;
}

// Numbers of up to eight characters, with or without a point. The digits and the power of ten that
// they are divided by are exact, so that the division rounds once, as it should.
inline std::optional<double> short_decimal(const char *s, size_t size, char point) {
    constexpr size_t most = 8;
    constexpr double powers[most] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};
    if (size - 1 >= most)
        return std::nullopt;
    uint64_t bytes = first_bytes(s, size);
    const uint64_t others = bytes ^ static_cast<unsigned char>(point) * in_each_byte;
    const uint64_t points = (others - in_each_byte) & ~others & 0x80 * in_each_byte;
    size_t places = 0;
    if (points != 0) { // of which the lowest is one
        const int at = std::countr_zero(points) & -8;
        const uint64_t in_front = bytes & ((uint64_t{1} << at) - 1);
        bytes = bytes >> at >> 8 << at | in_front;
        places = --size - static_cast<size_t>(at) / 8;
    }
    Digits digits;
    digits.add_first(bytes, size);
    if (size == 0 || !digits.only())
        return std::nullopt;
    return static_cast<double>(static_cast<int64_t>(digits.value())) / powers[places];
}

// The C library tells of all that is too large and of what is too small, so that only results well
// inside are plain.
inline std::optional<double> long_decimal(const char *s, size_t size, char point) {
    if (!is_digit(*s) && *s != point)
        return std::nullopt;
    double value = 0;
    const auto read = fast_float::from_chars_advanced(
        s, s + size, value, fast_float::parse_options(fast_float::general, point));
    if (read.ec != std::errc() || read.ptr != s + size ||
        !(value > std::numeric_limits<double>::min() &&
          value <= std::numeric_limits<double>::max()))
        return std::nullopt;
    return value;
}

inline std::optional<double> plain_double(const char *s) {
    const bool is_negative = *s == '-';
    s += is_negative || *s == '+';
    const char *const point = nl_langinfo(RADIXCHAR);
    if (point[1] != '\0' || !rounds_to_nearest())
        return std::nullopt;
    const size_t size = std::strlen(s);
    std::optional<double> value = short_decimal(s, size, *point);
    if (!value)
        value = long_decimal(s, size, *point);
    if (value && is_negative)
        value = -*value;
    return value;
}

inline std::optional<int64_t> plain_integer(const char *s) {
    const bool is_negative = *s == '-';
    s += is_negative || *s == '+';
    const size_t count = std::strlen(s);
    if (count - 1 > 17)
        return std::nullopt;
    const size_t head = (count - 1) % 8 + 1; // what is more than whole eights
    Digits digits;
    digits.add_first(first_bytes(s, count), head);
    for (const char *rest = s + head; rest < s + count; rest += 8)
        digits.add(load<uint64_t>(rest));
    if (!digits.only())
        return std::nullopt;
    const auto value = static_cast<int64_t>(digits.value());
    return is_negative ? -value : value;
}

} // namespace kestu
