/*
 * Bit fields and counts, and the two halves of a path.
 *
 *     char name[256];
 *     kestu_util_basename("/usr//lib//", name, sizeof name);      // "lib", returns 3
 *     kestu_util_get_bits_from_word(0x12345678, 8, 15);           // 0x56
 *
 * No function keeps state or changes its input: everything may run at the same time.
 */
#ifndef KESTU_UTIL_H
#define KESTU_UTIL_H

#include "kestu_defs.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/*
 * Bits `from` to `to` of `word`, both inclusive, moved down to bit 0. `to` is at most 31; with
 * `from` above `to` the result is 0.
 */
KESTU_API uint32_t kestu_util_get_bits_from_word(uint32_t word, uint8_t from, uint8_t to);

/*
 * Stores the position, 0 to 63, of the highest bit set in `mask` through `index` and returns
 * non-zero; for an empty mask stores nothing and returns 0.
 */
KESTU_API unsigned char kestu_util_bit_scan_reverse(uint32_t *index, uint64_t mask);

/*
 * The all-ones mask of the smallest field that holds the values 0 to `count` - 1; the field's width
 * in bits goes to `width`, which may be null. A count of 2^30 + 1 to 2^31 gives width 31 and mask
 * 0xFFFFFFFF; 0 gives width 63 and mask 0x7FFFFFFF; above 2^31 width 32 and mask 0.
 */
KESTU_API uint32_t kestu_util_create_mask(uint32_t count, uint32_t *width);

/* The number of bits set in `value`, of 32. */
KESTU_API int kestu_util_nsb32(uint32_t value);

/* The number of bits set in `value`, of 64. */
KESTU_API int kestu_util_nsb64(uint64_t value);

/*
 * Writes the directory part of `path` to `out`, which has room for `size` bytes. Slashes at the end
 * do not count; a null or empty path gives ".". Returns 0 and writes nothing when `size` is below
 * 2, else the length of the full result: a value of `size` or more means that it was cut. It works
 * on a copy of a path that is not empty; when there is no memory for it the process aborts.
 */
KESTU_API size_t kestu_util_dirname(const char *path, char *out, size_t size);

/* As kestu_util_dirname, the last component of `path`. */
KESTU_API size_t kestu_util_basename(const char *path, char *out, size_t size);

KESTU_END_DECLS

#endif
