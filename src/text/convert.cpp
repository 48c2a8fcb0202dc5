// Checked conversions of text to numbers.
#include "kestu_str.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace kestu;

namespace {

// One conversion: `parse` is the C library's parser, `word` and `code` what failures are reported
// with.
template <typename Parsed, typename Stored>
kestu_error_t *convert(const char *s, Stored *out, Parsed (*parse)(const char *, char **), int code,
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

} // namespace

kestu_error_t *kestu_str_to_double(const char *s, double *out) {
    return convert(s, out, std::strtod, KESTU_ERR_DOUBLE_TEXT, "double");
}

// Kept: the low 32 bits of what fits a long are stored. Relied on by: callers.
kestu_error_t *kestu_str_to_integer(const char *s, int *out) {
    return convert<long>(
        s, out, [](const char *text, char **end) { return std::strtol(text, end, 10); },
        KESTU_ERR_INTEGER_TEXT, "integer");
}

kestu_error_t *kestu_str_to_int64(const char *s, int64_t *out) {
    return convert<long long>(
        s, out, [](const char *text, char **end) { return std::strtoll(text, end, 10); },
        KESTU_ERR_INTEGER_TEXT, "int64");
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
