/*
 * The bit array: bits in 64-bit words that grow on demand.
 *
 *     kestu_bitarr_t *seen;
 *     if ((err = kestu_bitarr_create(&seen, 1000)))
 *         return err;
 *     seen->words[k / 64] |= (uint64_t)1 << (k % 64);
 *     printf("%zu of %zu\n", kestu_bitarr_num_bits_set(seen), seen->nbits);
 *     kestu_bitarr_free(seen);
 *
 * Bit k is bit k % 64 of word k / 64, which the caller may read and write. Arrays come
 * from the system's allocator and are released by kestu_bitarr_free. An array belongs to one thread
 * at a time. In all functions `ba` is an array or null, which is then an array of 0 bits.
 */
#ifndef KESTU_BITARR_H
#define KESTU_BITARR_H

#include "kestu_error.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

KESTU_BEGIN_DECLS

/*
 * An array. Bits of the last word in use from `nbits` on, and the words from `nwords` on, are 0:
 * whoever writes words directly keeps it so.
 */
typedef struct kestu_bitarr_t {
    uint64_t *words; /* bit k is bit k % 64 of word k / 64 */
    size_t nbits;    /* the length in bits */
    size_t nwords;   /* words in use: (nbits + 63) / 64 */
    size_t capacity; /* words allocated: at least 8, and a power of two above nwords when made */
} kestu_bitarr_t;

/*
 * Stores through `ba` a new array of `nbits` bits that are 0. Error: KESTU_ERR_NO_MEMORY (120012)
 * under "Cannot create bit array.", with null stored.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_bitarr_create(kestu_bitarr_t **ba, size_t nbits);

/*
 * Makes the array at `ba` `nbits` long; a null one is created. Bits below the new length keep their
 * values, new ones are 0. Error: KESTU_ERR_NO_MEMORY_TO_RESIZE (120013), or those of
 * kestu_bitarr_create, under "Cannot resize bit array.", with the array as it was.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_bitarr_resize(kestu_bitarr_t **ba, size_t nbits);

/* Releases `ba`. */
KESTU_API void kestu_bitarr_free(kestu_bitarr_t *ba);

/* Writes '0' or '1' for every bit of `ba` to `stream`, bit 0 first, without a newline. */
KESTU_API void kestu_bitarr_print(const kestu_bitarr_t *ba, FILE *stream);

/*
 * Writes a character for each bit of `ba` to `buf`, bit 0 first: `one` or `zero`, or '1' or '0'
 * when these are 0. At most `size` - 1 are written, and a terminator, unless `size` is 0. Returns
 * the number of bits, whatever was written.
 */
KESTU_API size_t kestu_bitarr_tostr(const kestu_bitarr_t *ba, char *buf, size_t size, char one,
                                    char zero);

/* Sets all bits of `ba`. */
KESTU_API void kestu_bitarr_set_all(kestu_bitarr_t *ba);

/* Clears all bits of `ba`. */
KESTU_API void kestu_bitarr_clear_all(kestu_bitarr_t *ba);

/* Inverts all bits of `ba`. */
KESTU_API void kestu_bitarr_toggle_all(kestu_bitarr_t *ba);

/*
 * Stores a copy of `src` through `dst`, null when `src` has no bits. Errors are those of
 * kestu_bitarr_create.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_bitarr_clone(const kestu_bitarr_t *src,
                                                           kestu_bitarr_t **dst);

/* The number of bits of `ba` that are 1. */
KESTU_API size_t kestu_bitarr_num_bits_set(const kestu_bitarr_t *ba);

/* The number of bits of `ba` that are 0. */
KESTU_API size_t kestu_bitarr_num_bits_cleared(const kestu_bitarr_t *ba);

/*
 * Stores through `out` the bits of `a` and `b` combined by OR. The array at `out` is resized to the
 * longer of the two and created when null; it may be `a` or `b`. The shorter one counts as filled
 * up with zeros. Errors are those of kestu_bitarr_resize.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_bitarr_or(const kestu_bitarr_t *a, const kestu_bitarr_t *b, kestu_bitarr_t **out);

/* As kestu_bitarr_or, combined by AND. The length is that of the longer one here too. */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_bitarr_and(const kestu_bitarr_t *a, const kestu_bitarr_t *b, kestu_bitarr_t **out);

/*
 * As kestu_bitarr_or for the bits of `a` without those of `b`. The length is that of the longer one
 * here too.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_bitarr_and_not(const kestu_bitarr_t *a, const kestu_bitarr_t *b, kestu_bitarr_t **out);

/* The value of bit number `bit` of `ba`; 0 beyond the end. */
KESTU_API int kestu_bitarr_get(const kestu_bitarr_t *ba, size_t bit);

/* Sets bit number `bit` of `ba`; does nothing beyond the end. */
KESTU_API void kestu_bitarr_set(kestu_bitarr_t *ba, size_t bit);

/* Clears bit number `bit` of `ba`; does nothing beyond the end. */
KESTU_API void kestu_bitarr_clear(kestu_bitarr_t *ba, size_t bit);

/* Inverts bit number `bit` of `ba`; does nothing beyond the end. */
KESTU_API void kestu_bitarr_toggle(kestu_bitarr_t *ba, size_t bit);

/* Sets `count` bits of `ba` from bit `from` on, as far as the array goes. */
KESTU_API void kestu_bitarr_set_range(kestu_bitarr_t *ba, size_t from, size_t count);

/* Clears `count` bits of `ba` from bit `from` on, as far as the array goes. */
KESTU_API void kestu_bitarr_clear_range(kestu_bitarr_t *ba, size_t from, size_t count);

/* Inverts `count` bits of `ba` from bit `from` on, as far as the array goes. */
KESTU_API void kestu_bitarr_toggle_range(kestu_bitarr_t *ba, size_t from, size_t count);

/* The number of the first bit of `ba` from `from` on that is 1; `nbits` when none is. */
KESTU_API size_t kestu_bitarr_next_set(const kestu_bitarr_t *ba, size_t from);

/* The number of the first bit of `ba` from `from` on that is 0; `nbits` when none is. */
KESTU_API size_t kestu_bitarr_next_clear(const kestu_bitarr_t *ba, size_t from);

/*
 * Moves all bits of `ba` to numbers larger by `count`. Those that leave the array are lost, and
 * zeros come in at the other end; the length stays.
 */
KESTU_API void kestu_bitarr_shift_up(kestu_bitarr_t *ba, size_t count);

/* As kestu_bitarr_shift_up, to numbers smaller by `count`. */
KESTU_API void kestu_bitarr_shift_down(kestu_bitarr_t *ba, size_t count);

/*
 * 1 when `a` and `b` have the same bits set, else 0. The shorter one counts as filled up with
 * zeros.
 */
KESTU_API int kestu_bitarr_equal(const kestu_bitarr_t *a, const kestu_bitarr_t *b);

/*
 * 1 when `b` has all bits that are set in `a`, else 0. The shorter one counts as filled up with
 * zeros.
 */
KESTU_API int kestu_bitarr_is_subset(const kestu_bitarr_t *a, const kestu_bitarr_t *b);

/* 1 when a bit is set in both `a` and `b`, else 0. */
KESTU_API int kestu_bitarr_intersects(const kestu_bitarr_t *a, const kestu_bitarr_t *b);

/*
 * Copies the words of `ba` to `count` words at `words`, as many as there is room for, and fills
 * what is left with zeros. Returns the number of words of the array.
 */
KESTU_API size_t kestu_bitarr_export_words(const kestu_bitarr_t *ba, uint64_t *words, size_t count);

/*
 * Makes the array at `ba` a copy of the `nbits` bits at `words`, bit 0 of the first word first; a
 * null one is created. Errors are those of kestu_bitarr_resize, with the array as it was.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_bitarr_import_words(kestu_bitarr_t **ba, const uint64_t *words, size_t nbits);

KESTU_END_DECLS

#endif
