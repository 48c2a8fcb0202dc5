/*
 * Text with backslash escapes to bytes and back, and integers in any base from 2 to 62.
 *
 *     char out[64];
 *     size_t size = sizeof out;
 *     kestu_error_t *err = kestu_str_escape_parse(out, &size, "a\\tb", 4, 0, 0);
 *                                                              // "a", a tab, "b"; size 4
 *     kestu_str_int64_to_base62(-62, 62, out, sizeof out);     // "-10"
 *
 * Escapes are \0 to \777 with one to three octal digits, \x with one or two and \u with one to four
 * hexadecimal digits, \a \b \f \n \r \t \v, and a backslash before any other character, which then
 * stands for itself. The caller owns all buffers. Everything may run at the same time as long as
 * nobody changes CharSet.
 */
#ifndef KESTU_ESCAPE_H
#define KESTU_ESCAPE_H

#include "kestu_error.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/* The classes of bytes. */
enum {
    KESTU_CHAR_LETTER = 0x01,      /* those of English and of code page 437, and _ */
    KESTU_CHAR_DIGIT = 0x02,       /* 0 to 9 */
    KESTU_CHAR_HEX_LETTER = 0x04,  /* A to F and a to f, together with KESTU_CHAR_LETTER */
    KESTU_CHAR_SPECIAL = 0x08,     /* NUL, line feed, backslash and question mark */
    KESTU_CHAR_BRACKET = 0x10,     /* brackets, quotes, marks that end a phrase */
    KESTU_CHAR_PUNCTUATION = 0x20, /* signs of operators, and other marks */
    KESTU_CHAR_SPACE = 0x40,       /* blank, tab, vertical tab, form feed, carriage return */
    KESTU_CHAR_LEAD = 0x80,        /* begins a character of two bytes */
};

/*
 * The classes of every byte of code page 437, and a 0 behind them. A program may mark the lead
 * bytes of its own character set with KESTU_CHAR_LEAD before it parses; no byte is marked at first.
 */
KESTU_API extern uint32_t CharSet[257];

/* The Unicode code points of code page 437. */
KESTU_API extern const uint16_t UniCode[256];

/*
 * Writes the `inlen` bytes of `in`, with their escapes decoded, and a terminator to `out`, which
 * has room for `size` bytes; `size` then receives the number of bytes needed, terminator included.
 * When that is more than there was room for, the text is cut. With a null `out` the size is only
 * computed.
 *
 * Escapes of 256 and above become UTF-8. With `wide` every other character becomes two bytes, low
 * byte first: its own value or, when it is no escape and `map` is set, that of UniCode. A byte
 * marked as a lead byte in CharSet and the byte behind it are copied as they are. An escape that
 * the input cuts short ends there, and a backslash as the last byte stands for itself.
 *
 * Errors: KESTU_ERR_NO_HEX_DIGITS (120064) for \x and \u without a digit; one with code 0 and no
 * message when there is no room for UTF-8. `out` then holds what was decoded before, terminated,
 * and `size` is untouched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_str_escape_parse(char *out, size_t *size, const char *in, size_t inlen, int wide, int map);

/*
 * Writes the `inlen` bytes of `in` as printable text that kestu_str_escape_parse turns back into
 * them, and a terminator, to `out`, which has room for `size` bytes; `size` then receives the
 * number of bytes needed, terminator included. What is printable is up to the locale. With a null
 * `out` the size is only computed. Error: KESTU_ERR_BUFFER_TOO_SMALL (120066) when the next
 * character or escape does not fit; `out` then holds what stands before it, terminated, and `size`
 * the bytes of that.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_escape_unparse(char *out, size_t *size,
                                                                 const char *in, size_t inlen);

/*
 * A step of the parser: decodes the escape whose backslash stands before `in`, reading never from
 * `end` on, moves `in` behind what it read, and stores the result through `value`, 0 when a digit
 * is missing. Error: KESTU_ERR_NO_HEX_DIGITS (120064) when there is no digit behind \x or \u.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *esc_char(const char **in, const char *end, uint32_t *value);

/*
 * As esc_char for up to `max_digits` hexadecimal digits from `in` on, of which the last eight
 * count.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *scan_hex(const char **in, const char *end, int max_digits,
                                                 uint32_t *value);

/*
 * Writes the UTF-8 of the code point `code` to where `out` points, moves `out` behind it and lowers
 * `room`, the number of bytes there, by its length; with a null `out` only `room` is lowered.
 * Returns 1, or 0 when there is too little room, or -1 for a code above 0x10FFFF; nothing is
 * changed then. 0xFFFF is no character: it writes nothing and gives 1.
 */
KESTU_API int convert_from_ucs(uint32_t code, char **out, size_t *room);

/*
 * Writes `value` to `out`, which has room for `size` bytes, in a `base` from 2 to 62 with the
 * digits 0 to 9, A to Z and a to z and a minus where needed. Returns the length of the full text: a
 * value of `size` or more means that it was cut. For another base it returns 0 and writes nothing.
 */
KESTU_API int kestu_str_int64_to_base62(int64_t value, int base, char *out, size_t size);

/*
 * Reads a number in `base` from the start of `s`, after white space and a sign, into `value`;
 * `end`, which may be null, receives the place behind the last digit, or `s` when there is none and
 * the value is 0. Base 16 allows a 0x or 0X in front; base 0 means 16 with it, else 8 with a
 * leading 0, else 10. The digits are those of kestu_str_int64_to_base62 in every base: lower-case
 * letters are no hexadecimal digits.
 *
 * Error: KESTU_ERR_INTEGER_TEXT (120062) "'%s' does not fit into 64-bit signed integer."; `value`
 * is then the nearest that fits and `end` is untouched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_str_base62_to_int64(const char *s, char **end,
                                                                  int base, int64_t *value);

KESTU_END_DECLS

#endif
