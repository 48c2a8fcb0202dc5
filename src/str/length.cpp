// Lengths in bytes and in characters, and trimming.
#include "kestu_str.h"

#include <cctype>
#include <cstring>

int kestu_str_len(const char *s) {
    return static_cast<int>(std::strlen(s));
}

size_t kestu_str_utf8_len(const char *s) {
    size_t characters = 0;
    for (; *s; ++s)
        characters += (*s & 0xC0) != 0x80;
    return characters;
}

char *kestu_str_trim(char *s) {
    if (!s)
        return s;
    const auto is_space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    char *begin = s;
    while (is_space(*begin))
        ++begin;
    char *end = begin + std::strlen(begin);
    while (end > begin && is_space(end[-1]))
        --end;
    const size_t length = static_cast<size_t>(end - begin);
    std::memmove(s, begin, length);
    s[length] = '\0';
    return s;
}
