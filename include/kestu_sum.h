/*
 * Checksums of bytes: SHA-1, whose digest has 20 bytes though kestu_sha1 writes 21, the CRC-32 of
 * zlib and IEEE 802.3, CRC-32C, and CRC-16/ARC.
 *
 *     unsigned char digest[KESTU_SHA1_BUFFER_SIZE];
 *     kestu_sha1(digest, data, size);
 *     uint32_t crc = kestu_util_crc32(0, head, head_size);
 *     crc = kestu_util_crc32(crc, rest, rest_size);   // the CRC of head and rest together
 *
 * Nothing is allocated and nothing can fail. The fastest way that the processor has is chosen at
 * the first call; the results do not depend on it. No state is shared: everything may run at the
 * same time, with a context of SHA-1 on one thread at a time. SHA-1 and CRCs find accidents; they
 * do not keep out attackers.
 */
#ifndef KESTU_SUM_H
#define KESTU_SUM_H

#include "kestu_defs.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/* Sizes of SHA-1, in bytes. */
enum {
    KESTU_SHA1_SIZE = 20,        /* of a digest */
    KESTU_SHA1_BUFFER_SIZE = 21, /* what kestu_sha1 writes: the digest and a zero */
    KESTU_SHA1_BLOCK_SIZE = 64,  /* what is compressed at once */
};

/* A SHA-1 under way. The caller provides it; it holds no resources. */
typedef struct kestu_sha1_t {
    uint32_t state[5];                           /* the chaining words H0 to H4 */
    uint32_t count[2];                           /* message length in bits: low word, high word */
    unsigned char buffer[KESTU_SHA1_BLOCK_SIZE]; /* the block that is not full yet */
} kestu_sha1_t;

/*
 * Begins a SHA-1 (FIPS 180-1) in `context`: add the data in pieces of any size with
 * kestu_sha1_update, then take the digest with kestu_sha1_final.
 */
KESTU_API void kestu_sha1_init(kestu_sha1_t *context);

/* Adds `len` bytes of `data` to the SHA-1 in `context`. `data` may be null when `len` is 0. */
KESTU_API void kestu_sha1_update(const unsigned char *data, uint32_t len, kestu_sha1_t *context);

/* As kestu_sha1_update for any number of bytes at once. */
KESTU_API void kestu_sha1_update64(const unsigned char *data, uint64_t len, kestu_sha1_t *context);

/*
 * Writes the 20 bytes of the `digest` of what was added to `context`, and fills the context with
 * zeros.
 */
KESTU_API void kestu_sha1_final(unsigned char *digest, kestu_sha1_t *context);

/* One compression: takes the 64 bytes of `block` into the five chaining words `state`. */
KESTU_API void kestu_sha1_transform(uint32_t *state, const unsigned char *block);

/*
 * The SHA-1 of `len` bytes of `data` at once. `digest` has room for KESTU_SHA1_BUFFER_SIZE bytes: a
 * zero is written behind the 20 of the digest, so that it can be handled as a terminated byte
 * string.
 */
KESTU_API void kestu_sha1(unsigned char *digest, const unsigned char *data, uint32_t len);

/* As kestu_sha1 for any number of bytes. */
KESTU_API void kestu_sha1_64(unsigned char *digest, const unsigned char *data, uint64_t len);

/*
 * Continues `crc`, which is 0 at the start, over the `len` bytes at `buf`; an empty buffer leaves
 * it as it is and a null one gives 0. The reflected CRC with the polynomial 0xEDB88320
 * (0x04C11DB7), complemented at both ends: over "123456789" it gives 0xCBF43926.
 */
KESTU_API uint32_t kestu_util_crc32(uint32_t crc, const unsigned char *buf, size_t len);

/*
 * As kestu_util_crc32 with the polynomial 0xA001 (0x8005), not complemented; of `crc` the low 16
 * bits count. Over "123456789" it gives 0xBB3D.
 */
KESTU_API uint16_t kestu_util_crc16(uint32_t crc, const unsigned char *buf, size_t len);

/*
 * As kestu_util_crc32 with the polynomial 0x82F63B78 (0x1EDC6F41): over "123456789" it gives
 * 0xE3069283.
 */
KESTU_API uint32_t kestu_util_crc32c(uint32_t crc, const unsigned char *buf, size_t len);

/*
 * The CRC-32 of two texts one after the other, from the CRC of the `first`, that of the `second`,
 * each begun with 0, and the `size` of the second in bytes: for parts that are summed apart.
 */
KESTU_API uint32_t kestu_util_crc32_combine(uint32_t first, uint32_t second, uint64_t size);

/* As kestu_util_crc32_combine for kestu_util_crc32c. */
KESTU_API uint32_t kestu_util_crc32c_combine(uint32_t first, uint32_t second, uint64_t size);

/* As kestu_util_crc32_combine for kestu_util_crc16. */
KESTU_API uint16_t kestu_util_crc16_combine(uint32_t first, uint32_t second, uint64_t size);

KESTU_END_DECLS

#endif
