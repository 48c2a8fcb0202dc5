// Replacement of substrings and of characters.
#include "kestu_str.h"

#include <cstdlib>
#include <cstring>

char *kestu_str_replace_all(const char *s, const char *from, const char *to) {
    if (!from || !to || !*from)
        return strdup(s);
    const size_t from_length = std::strlen(from);
    const size_t to_length = std::strlen(to);
    size_t length = 0;
    const char *tail = s;
    while (const char *found = std::strstr(tail, from)) {
        length += static_cast<size_t>(found - tail) + to_length;
        tail = found + from_length;
    }
    char *result = static_cast<char *>(std::malloc(length + std::strlen(tail) + 1));
    if (!result)
        return nullptr;
    char *out = result;
    while (const char *found = std::strstr(s, from)) {
        out = static_cast<char *>(mempcpy(out, s, static_cast<size_t>(found - s)));
        out = static_cast<char *>(mempcpy(out, to, to_length));
        s = found + from_length;
    }
    std::strcpy(out, s);
    return result;
}

char *kestu_str_replace(const char *s, const char *from, const char *to) {
    const char *found = *from ? std::strstr(s, from) : nullptr;
    if (!found)
        return strdup(s);
    const char *rest = found + std::strlen(from);
    char *result = nullptr;
    const int head = static_cast<int>(found - s);
    return kestu_str_asprintf(&result, "%.*s%s%s", head, s, to, rest) < 0 ? nullptr : result;
}

char *kestu_str_replace_char(char *s, char from, char to) {
    if (from == '\0')
        return s;
    for (char *c = s; *c; ++c)
        if (*c == from)
            *c = to;
    return s;
}
