// Checked conversions of text to numbers.
#include "kestu_str.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "text/plain_numbers.hpp"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace kestu;

namespace {

// One conversion of what is not plain: `parse` is the C library's parser, `word` and `code` what
// failures are reported with.
template <typename Parsed, typename Stored>
[[gnu::noinline]] kestu_error_t *convert(const char *s, Stored *out,
                                         Parsed (*parse)(const char *, char **), int code,
                                         const char *word) {
    const KeptErrno kept;
    auto *end = const_cast<char *>(s);
    errno = 0;
    const Parsed value = parse(s, &end);
    if (errno == ERANGE || (errno != 0 && value == Parsed{}))
        return fail(code, "Cannot convert string '%s' to %s: %s", s, word, std::strerror(errno));
    if (end == s || *end != '\0')
        return fail(code, "Cannot convert string '%s' to %s", s, word);
    *out = static_cast<Stored>(value);
    return nullptr;
}

long parse_decimal(const char *s, char **end) {
    return std::strtol(s, end, 10);
}

template <typename Stored>
kestu_error_t *convert_integer(const char *s, Stored *out, const char *word) {
    const std::optional<int64_t> value = plain_integer(s);
    if (!value)
        return convert(s, out, parse_decimal, KESTU_ERR_INTEGER_TEXT, word);
    *out = static_cast<Stored>(*value);
    return nullptr;
}

} // namespace

kestu_error_t *kestu_str_to_double(const char *s, double *out) {
    const std::optional<double> value = plain_double(s);
    if (!value)
        return convert(s, out, std::strtod, KESTU_ERR_DOUBLE_TEXT, "double");
    *out = *value;
    return nullptr;
}

// Kept: the low 32 bits of what fits a long are stored. Relied on by: callers.
kestu_error_t *kestu_str_to_integer(const char *s, int *out) {
    return convert_integer(s, out, "integer");
}

kestu_error_t *kestu_str_to_int64(const char *s, int64_t *out) {
    return convert_integer(s, out, "int64");
}

int kestu_str_is_integer(const char *s) {
    if (*s == '+' || *s == '-')
        ++s;
    if (!std::isdigit(static_cast<unsigned char>(*s)))
        return 0;
    while (std::isdigit(static_cast<unsigned char>(*s)))
        ++s;
    return *s == '\0';
}
