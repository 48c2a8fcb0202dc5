/*
 * Text: checked conversions to numbers, bounded copies, comparison, lengths, trimming, replacement
 * and formatting into buffers, new strings and pools.
 *
 *     int n;
 *     kestu_error_t *err = kestu_str_to_integer("42 ", &n);
 *
 * Here the error says "Cannot convert string '42 ' to integer".
 *
 * Strings are bytes that end with a NUL. Strings that a function says are new come from malloc and
 * are released by the caller with free(). No state is kept: all functions may run at the same time.
 */
#ifndef KESTU_STR_H
#define KESTU_STR_H

#include "kestu_error.h"

#include <apr_pools.h>

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/*
 * Converts the whole of `s` to a number and stores it through `out`. White space is accepted in
 * front, nothing behind. Error, with nothing stored: KESTU_ERR_DOUBLE_TEXT (120063) "Cannot convert
 * string '%s' to double", followed by the system's text when the number is out of range.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_to_double(const char *s, double *out);

/*
 * As kestu_str_to_double for decimal integers: checks the range of long and then keeps the low 32
 * bits. Error: KESTU_ERR_INTEGER_TEXT (120062) "Cannot convert string '%s' to integer".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_to_integer(const char *s, int *out);

/*
 * As kestu_str_to_integer, of 64 bits, which are all kept. Error: KESTU_ERR_INTEGER_TEXT (120062)
 * "Cannot convert string '%s' to int64".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_to_int64(const char *s, int64_t *out);

/*
 * As kestu_str_to_int64 for numbers without a sign: below 0 is out of range, "-0" apart. Error:
 * KESTU_ERR_INTEGER_TEXT (120062) "Cannot convert string '%s' to uint64".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_to_uint64(const char *s, uint64_t *out);

/*
 * As kestu_str_to_integer, but nothing is skipped, cut or taken from the locale: a sign or none and
 * decimal digits. What the type of `out` cannot hold is out of range.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_strict_integer(const char *s, int *out);

/* As kestu_str_strict_integer, of 64 bits, with the error of kestu_str_to_int64. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_strict_int64(const char *s, int64_t *out);

/* As kestu_str_strict_integer, of 64 bits without a sign, with the error of kestu_str_to_uint64. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_strict_uint64(const char *s, uint64_t *out);

/*
 * As kestu_str_to_double, but nothing is skipped, cut or taken from the locale: a sign or none,
 * decimal digits, a '.' and an exponent, or "inf" or "nan".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_strict_double(const char *s, double *out);

/* Room for any text of kestu_str_from_double. */
enum { KESTU_STR_DOUBLE_SIZE = 25 /* in bytes, with the terminator */ };

/*
 * Writes the shortest text that reads back as just `value` to `buf`, with or without an exponent,
 * as std::to_chars of C++ does: "0.1", "1e+30", "-inf". At most `size` - 1 bytes are written, and a
 * terminator, unless `size` is 0. Returns the length of the text, whatever was written.
 * kestu_str_strict_double reads it. The digits are found by R. Giulietti's method, "The Schubfach
 * way to render doubles", 2020.
 */
KESTU_API size_t kestu_str_from_double(double value, char *buf, size_t size);

/* 1 when `s` is an optional sign and then decimal digits to its end, else 0. */
KESTU_API int kestu_str_is_integer(const char *s);

/*
 * Copies at most `size` - 1 bytes of `src` to `dst` and terminates it; with a `size` of 0 nothing
 * is written. Returns the length of `src`: a value of `size` or more means that it was cut.
 */
KESTU_API size_t kestu_str_strlcpy(char *dst, const char *src, size_t size);

/*
 * As kestu_str_strlcpy, but appends as many bytes as fit to the text in `dst`, and returns the
 * length of both. When there is no terminator within `size` bytes it writes nothing.
 */
KESTU_API size_t kestu_str_strlcat(char *dst, const char *src, size_t size);

/*
 * Compares `s1` with `s2` with the letters A to Z folded to lower case. The result is the
 * difference of the first two bytes that differ, taken as signed: bytes from 0x80 up stand before
 * all others.
 */
KESTU_API int kestu_str_stricmp(const char *s1, const char *s2);

/* The number of bytes in `s` before the terminator. */
KESTU_API int kestu_str_len(const char *s);

/* The number of UTF-8 characters in `s`: of bytes that do not continue one. Nothing is validated.
 */
KESTU_API size_t kestu_str_utf8_len(const char *s);

/* Whether the `size` bytes of `text` are well-formed UTF-8, zero bytes included: 1 or 0. */
KESTU_API int kestu_str_utf8_valid(const void *text, size_t size);

/* Removes white space (isspace) at both ends of `s` in place and returns `s`, which may be null. */
KESTU_API char *kestu_str_trim(char *s);

/*
 * A new string: `s` with every occurrence of `from` replaced by `to`. What was put in is not
 * searched again. It is a copy when `from` or `to` is null or `from` is empty. Null when no memory
 * is left.
 */
KESTU_API char *kestu_str_replace_all(const char *s, const char *from, const char *to);

/*
 * As kestu_str_replace_all for the first occurrence alone; an empty `from` stands at the beginning.
 */
KESTU_API char *kestu_str_replace(const char *s, const char *from, const char *to);

/*
 * Replaces every byte `from` in `s` by `to`, in place, and returns `s`. With a `to` of 0 the text
 * ends at the first byte replaced, and what stands behind it stays as it is.
 */
KESTU_API char *kestu_str_replace_char(char *s, char from, char to);

/*
 * Formats `format` and what follows it into `buf` of `size` bytes. Result and failures are those of
 * rpl_vsnprintf (kestu_format.h). No long double may be passed: the compiler accepts one under
 * `%Lf`, but a double is fetched.
 */
KESTU_API int kestu_str_snprintf(char *buf, size_t size, const char *format, ...)
    KESTU_PRINTF(3, 4);

/* As kestu_str_snprintf, into a new string stored through `ret`, as rpl_vasprintf does. */
KESTU_API int kestu_str_asprintf(char **ret, const char *format, ...) KESTU_PRINTF(2, 3);

/* As kestu_str_asprintf with the arguments `args`. */
KESTU_API int kestu_str_vasprintf(char **ret, const char *format, va_list args) KESTU_PRINTF(2, 0);

/*
 * Formats `format` with the arguments that follow into a string that lives in `pool`. Null when the
 * text cannot be formatted or no memory is left. No long double may be passed: the compiler accepts
 * one under `%Lf`, but a double is fetched.
 */
KESTU_API char *kestu_str_psprintf(apr_pool_t *pool, const char *format, ...) KESTU_PRINTF(2, 3);

/* As kestu_str_psprintf with the arguments `args`. */
KESTU_API char *kestu_str_pvsprintf(apr_pool_t *pool, const char *format, va_list args)
    KESTU_PRINTF(2, 0);

KESTU_END_DECLS

#endif
