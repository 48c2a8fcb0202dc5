// Numbers of which nothing is skipped, cut or taken from the locale.
#include "kestu_str.h"

#include "error/error.hpp"
#include "text/plain_numbers.hpp"

#include <cerrno>
#include <cmath>
#include <cstring>

using namespace kestu;

namespace {

enum class Outcome { read, malformed, out_of_range };

kestu_error_t *report(Outcome outcome, int code, const char *s, const char *word) {
    switch (outcome) {
    case Outcome::read:
        return nullptr;
    case Outcome::malformed:
        return fail(code, "Cannot convert string '%s' to %s", s, word);
    case Outcome::out_of_range:
        break;
    }
    return fail(code, "Cannot convert string '%s' to %s: %s", s, word, std::strerror(ERANGE));
}

template <typename Integer>
Outcome read(const char *s, Integer *out) {
    const bool is_negative = *s == '-';
    s += is_negative || *s == '+';
    if (!is_digit(*s))
        return Outcome::malformed;
    Integer value = 0;
    bool fits = true;
    for (; is_digit(*s); ++s) {
        const auto digit = static_cast<Integer>(*s - '0');
        fits = fits && !__builtin_mul_overflow(value, 10, &value) &&
               !(is_negative ? __builtin_sub_overflow(value, digit, &value)
                             : __builtin_add_overflow(value, digit, &value));
    }
    if (*s != '\0')
        return Outcome::malformed;
    if (!fits)
        return Outcome::out_of_range;
    *out = value;
    return Outcome::read;
}

Outcome read(const char *s, double *out) {
    const char *const number = s + (*s == '+');
    const char *const digits = number + (*number == '-');
    if (digits - s > 1)
        return Outcome::malformed;
    const char *const end = s + std::strlen(s);
    double value = 0;
    const auto [stopped, status] = fast_float::from_chars(number, end, value);
    if (stopped != end || number == end || status == std::errc::invalid_argument)
        return Outcome::malformed;
    const bool is_zero = std::strspn(digits, "0.") == std::strcspn(digits, "eE");
    const bool is_finite = is_digit(*digits) || *digits == '.';
    if (is_finite && (std::isinf(value) || (value == 0 && !is_zero)))
        return Outcome::out_of_range;
    *out = value;
    return Outcome::read;
}

} // namespace

kestu_error_t *kestu_str_to_uint64(const char *s, uint64_t *out) {
    const char *const number = s + std::strspn(s, " \t\n\v\f\r");
    return report(read(number, out), KESTU_ERR_INTEGER_TEXT, s, "uint64");
}

kestu_error_t *kestu_str_strict_integer(const char *s, int *out) {
    return report(read(s, out), KESTU_ERR_INTEGER_TEXT, s, "integer");
}

kestu_error_t *kestu_str_strict_int64(const char *s, int64_t *out) {
    return report(read(s, out), KESTU_ERR_INTEGER_TEXT, s, "int64");
}

kestu_error_t *kestu_str_strict_uint64(const char *s, uint64_t *out) {
    return report(read(s, out), KESTU_ERR_INTEGER_TEXT, s, "uint64");
}

kestu_error_t *kestu_str_strict_double(const char *s, double *out) {
    return report(read(s, out), KESTU_ERR_DOUBLE_TEXT, s, "double");
}
