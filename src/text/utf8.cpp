// Whether a text is UTF-8.
#include "base/utf8_valid.hpp"
#include "kestu_str.h"

int kestu_str_utf8_valid(const void *text, size_t size) {
    return size == 0 ||
           kestu::utf8_dispatch.current().is_valid(static_cast<const unsigned char *>(text), size);
}
