/*
 * Formatted output: the C99 printf family on an engine of the library's own.
 *
 *     char line[80];
 *     int n = rpl_snprintf(line, sizeof line, "%'d pixels, %.2f bits", 1234567, 7.25);
 *
 * It never looks at the locale and never allocates, but for the two functions that return a new
 * string. Digits of floating numbers are exact: the nearest decimal number is printed, and of two
 * that are equally near the even one. The conversions are those of C99 with these differences: `'`
 * groups integer digits by ","; the decimal point is always "."; c ignores width and `-`; lc and ls
 * come out in UTF-8; a and A print as f and F; a null s prints "(null)", a null p "(nil)"; L
 * changes nothing; at most 19 fractional digits are given, and no exponents below -308; an unknown
 * conversion prints nothing and takes no argument. Unknown are, although compilers let them pass,
 * C, S and m, the modifiers q and Z, the flag I, and arguments by number (`%1$d`).
 *
 * No state is kept: all functions may run at the same time.
 */
#ifndef KESTU_FORMAT_H
#define KESTU_FORMAT_H

#include "kestu_defs.h"

#include <stdarg.h>
#include <stddef.h>

KESTU_BEGIN_DECLS

/*
 * Formats `format` with `args` into `str` of `size` bytes. At most `size` - 1 characters are stored
 * and then a terminator; with a `size` of 0 nothing is written and `str` may be null. Returns the
 * length of the full output, cut or not. Returns -1 with errno EOVERFLOW when a width or precision
 * is beyond INT_MAX or a floating value has an integer part of 2^64 or more, and with errno ERANGE
 * when the output is of INT_MAX characters or more; what was produced so far is stored then. No
 * long double may be passed: the compiler accepts one under `%Lf`, but a double is fetched.
 */
KESTU_API int rpl_vsnprintf(char *str, size_t size, const char *format, va_list args)
    KESTU_PRINTF(3, 0);

/* As rpl_vsnprintf with the arguments that follow. */
KESTU_API int rpl_snprintf(char *str, size_t size, const char *format, ...) KESTU_PRINTF(3, 4);

/*
 * As rpl_vsnprintf, into a new string that is stored through `ret` and released by the caller with
 * free(). Returns its length, or -1 as there, with `ret` untouched, or -1 when no memory is left,
 * with null stored.
 */
KESTU_API int rpl_vasprintf(char **ret, const char *format, va_list args) KESTU_PRINTF(2, 0);

/* As rpl_vasprintf with the arguments that follow. */
KESTU_API int rpl_asprintf(char **ret, const char *format, ...) KESTU_PRINTF(2, 3);

KESTU_END_DECLS

#endif
