// Comparison without regard to the case of ASCII letters.
#include "kestu_str.h"

namespace {

signed char fold(char c) {
    return static_cast<signed char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
}

} // namespace

int kestu_str_stricmp(const char *s1, const char *s2) {
    while (fold(*s1) == fold(*s2) && *s1) {
        ++s1;
        ++s2;
    }
    return fold(*s1) - fold(*s2);
}
