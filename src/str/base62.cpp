// 64-bit integers as text in any base up to 62, and back.
#include "kestu_escape.h"

#include "frame/error.hpp"
#include "kestu_str.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

using namespace kestu;

namespace {

constexpr std::string_view alphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr int max_base = static_cast<int>(alphabet.size());

// A minus, 64 binary digits and the terminator.
constexpr size_t max_text = 66;

// Divides by a base of up to 62 with a multiplication: with the reciprocal rounded up, the error
// stays below one for dividends below 2^58 (Granlund and Montgomery 1994).
constexpr int exact_bits = 58;

constexpr auto reciprocals = [] {
    std::array<uint64_t, max_base + 1> table{};
    for (uint64_t base = 2; base <= max_base; ++base)
        table[base] = UINT64_MAX / base + 1;
    return table;
}();

uint64_t divide(uint64_t n, unsigned base) {
    if (n >> exact_bits)
        return n / base;
    __extension__ using Product = unsigned __int128;
    return static_cast<uint64_t>(Product{n} * reciprocals[base] >> 64);
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
    uint64_t n = 0;
    for (unsigned digit; (digit = digit_value(**s)) < digits; ++*s) {
        if (__builtin_mul_overflow(n, static_cast<uint64_t>(base), &n) || n > limit - digit)
            return false;
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
    char *const end = text + max_text - 1;
    char *start = end;
    *end = '\0';
    uint64_t n = magnitude_of(value);
    do {
        const uint64_t quotient = divide(n, static_cast<unsigned>(base));
        *--start = alphabet[n - quotient * static_cast<unsigned>(base)];
        n = quotient;
    } while (n > 0);
    if (value < 0)
        *--start = '-';
    kestu_str_strlcpy(out, start, size);
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
        return fail(120062, "'%s' does not fit into 64-bit signed integer.", s);
    if (end)
        *end = const_cast<char *>(at == digits ? s : at);
    return nullptr;
}
