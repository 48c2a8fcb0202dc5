// Replacement of substrings and of characters.
#include "kestu_str.h"

#include "base/kept_errno.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace kestu;

namespace {

// Calls `found` with every occurrence of `from` in `s`, at most `most` of them, one behind the
// other.
template <typename Found>
void each_occurrence(const char *s, const char *from, size_t from_length, size_t most,
                     Found found) {
    while (most-- > 0 && (s = std::strstr(s, from)) != nullptr) {
        found(s);
        s += from_length;
    }
}

// Looks for the occurrences twice: first to know how long the result is.
char *replace(const char *s, const char *from, const char *to, size_t most) {
    const size_t from_length = std::strlen(from);
    const size_t to_length = std::strlen(to);
    size_t occurrences = 0;
    each_occurrence(s, from, from_length, most, [&](const char *) { ++occurrences; });
    const size_t s_length = std::strlen(s);
    size_t put_in = 0;
    size_t length = s_length - occurrences * from_length;
    if (__builtin_mul_overflow(occurrences, to_length, &put_in) ||
        __builtin_add_overflow(length, put_in, &length) || length == SIZE_MAX)
        return nullptr;
    auto *result = static_cast<char *>(std::malloc(length + 1));
    if (!result)
        return nullptr;
    char *out = result;
    const char *rest = s;
    each_occurrence(s, from, from_length, occurrences, [&](const char *found) {
        out = static_cast<char *>(mempcpy(out, rest, static_cast<size_t>(found - rest)));
        out = static_cast<char *>(mempcpy(out, to, to_length));
        rest = found + from_length;
    });
    std::memcpy(out, rest, s_length - static_cast<size_t>(rest - s) + 1);
    return result;
}

} // namespace

char *kestu_str_replace_all(const char *s, const char *from, const char *to) {
    const KeptErrno kept;
    return from && to && *from ? replace(s, from, to, SIZE_MAX) : strdup(s);
}

char *kestu_str_replace(const char *s, const char *from, const char *to) {
    const KeptErrno kept;
    return replace(s, from, to, 1);
}

char *kestu_str_replace_char(char *s, char from, char to) {
    if (from == '\0' || from == to)
        return s;
    for (char *c = s; (c = std::strchr(c, from)) != nullptr; *c = to) {
    }
    return s;
}
