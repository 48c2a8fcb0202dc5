// Formatting under the names of the text family.
#include "kestu_str.h"

#include "base/pool_text.hpp"
#include "kestu_format.h"

#include <cerrno>

int kestu_str_snprintf(char *buf, size_t size, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vsnprintf(buf, size, format, args);
    va_end(args);
    return length;
}

int kestu_str_asprintf(char **ret, const char *format, ...) {
    va_list args;
    va_start(args, format);
    const int length = rpl_vasprintf(ret, format, args);
    va_end(args);
    return length;
}

int kestu_str_vasprintf(char **ret, const char *format, va_list args) {
    return rpl_vasprintf(ret, format, args);
}

char *kestu_str_psprintf(apr_pool_t *pool, const char *format, ...) {
    va_list args;
    va_start(args, format);
    char *text = kestu_str_pvsprintf(pool, format, args);
    va_end(args);
    return text;
}

char *kestu_str_pvsprintf(apr_pool_t *pool, const char *format, va_list args) {
    kestu::Draft draft(format, args);
    if (draft.failure() == 0)
        return kestu::pool_draft(pool, draft);
    errno = draft.failure();
    return nullptr;
}
