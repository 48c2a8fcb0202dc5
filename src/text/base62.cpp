// 64-bit integers as text in any base up to 62, and back.
#include "kestu_escape.h"

#include "base/sink.hpp"
#include "error/error.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <string_view>

using namespace kestu;

namespace {

constexpr std::string_view alphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int max_base = static_cast<int>(alphabet.size());

// A minus and 64 binary digits.
constexpr size_t max_text = 65;

// Division by a constant as a multiplication and a shift, exact for dividends up to 2^63. See
// Granlund and Montgomery, "Division by Invariant Integers using Multiplication", 1994.
class Divisor {
  public:
    constexpr Divisor() = default;
    explicit constexpr Divisor(unsigned d) : divisor_(d), shift_(std::bit_width(d - 1) - 1) {
        multiplier_ = static_cast<uint64_t>((Wide{1} << (64 + shift_)) / d + ((d & (d - 1)) != 0));
    }

    uint64_t quotient(uint64_t n) const {
        return static_cast<uint64_t>(Wide{n} * multiplier_ >> 64) >> shift_;
    }
    unsigned remainder(uint64_t n, uint64_t quotient_of_n) const {
        return static_cast<unsigned>(n - quotient_of_n * divisor_);
    }

  private:
    __extension__ using Wide = unsigned __int128;
    uint64_t multiplier_ = 0;
    unsigned divisor_ = 0;
    int shift_ = 0;
};

// By a base and by its square, for two digits at a time.
struct Divisors {
    Divisor base;
    Divisor square;
};

constexpr auto divisors = [] {
    std::array<Divisors, max_base + 1> table{};
    for (unsigned base = 2; base <= max_base; ++base)
        table[base] = {Divisor(base), Divisor(base * base)};
    return table;
}();

// Writes the digits of `n` in front of `end`. Returns where they begin.
char *write_digits(char *end, uint64_t n, unsigned base) {
    const Divisors &by = divisors[base];
    char *start = end;
    while (n >= base) {
        const uint64_t rest = by.square.quotient(n);
        const unsigned pair = by.square.remainder(n, rest);
        const uint64_t high = by.base.quotient(pair);
        *--start = alphabet[by.base.remainder(pair, high)];
        *--start = alphabet[high];
        n = rest;
    }
    if (n > 0 || start == end)
        *--start = alphabet[n];
    return start;
}

uint64_t magnitude_of(int64_t value) {
    return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
}

constexpr unsigned char no_digit = 0xFF;

constexpr auto digit_values = [] {
    std::array<unsigned char, 256> table{};
    table.fill(no_digit);
    for (size_t i = 0; i < alphabet.size(); ++i)
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<unsigned char>(i);
    return table;
}();

unsigned digit_value(char c) {
    return digit_values[static_cast<unsigned char>(c)];
}

// Finds out what base 0 means and steps over the prefix of base 16.
int settle_base(int base, const char **s) {
    const bool leading_zero = **s == '0';
    if ((base == 0 || base == 16) && leading_zero && ((*s)[1] == 'x' || (*s)[1] == 'X')) {
        *s += 2;
        return 16;
    }
    return base != 0 ? base : leading_zero ? 8 : 10;
}

// Reads digits up to the first character that is none. False when `limit` is exceeded.
bool read_digits(const char **s, int base, uint64_t limit, uint64_t *number) {
    const auto digits = static_cast<unsigned>(std::clamp(base, 0, max_base));
    const auto factor = static_cast<uint64_t>(base);
    const uint64_t always_fits = base <= max_base ? INT64_MAX / max_base - 1 : 0;
    uint64_t n = 0;
    for (unsigned digit; (digit = digit_value(**s)) < digits; ++*s) {
        if (n <= always_fits)
            n = n * factor + digit;
        else if (__builtin_mul_overflow(n, factor, &n) || n > limit - digit)
            return false;
        else
            n += digit;
    }
    *number = n;
    return true;
}

} // namespace

int kestu_str_int64_to_base62(int64_t value, int base, char *out, size_t size) {
    if (base < 2 || base > max_base)
        return 0;
    char text[max_text];
    char *const end = text + max_text;
    char *start = write_digits(end, magnitude_of(value), static_cast<unsigned>(base));
    if (value < 0)
        *--start = '-';
    Sink sink(out, size);
    sink.put({start, static_cast<size_t>(end - start)});
    sink.terminate();
    return static_cast<int>(end - start);
}

kestu_error_t *kestu_str_base62_to_int64(const char *s, char **end, int base, int64_t *value) {
    const char *at = s;
    while (std::isspace(static_cast<unsigned char>(*at)))
        ++at;
    const bool negative = *at == '-';
    if (negative || *at == '+')
        ++at;
    base = settle_base(base, &at);
    const char *const digits = at;
    const uint64_t limit = magnitude_of(negative ? INT64_MIN : INT64_MAX);
    uint64_t number = limit;
    const bool fits = read_digits(&at, base, limit, &number);
    *value = static_cast<int64_t>(negative ? 0 - number : number);
    if (!fits)
        return fail(KESTU_ERR_INTEGER_TEXT, "'%s' does not fit into 64-bit signed integer.", s);
    if (end)
        *end = const_cast<char *>(at == digits ? s : at);
    return nullptr;
}
