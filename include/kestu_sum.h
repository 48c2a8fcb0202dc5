/*
 * Checksums of bytes: the CRC-32 of zlib and IEEE 802.3, and CRC-16/ARC.
 *
 *     uint32_t crc = kestu_util_crc32(0, head, head_size);
 *     crc = kestu_util_crc32(crc, rest, rest_size);             // the CRC of both, one after the
 * other
 *
 * Nothing is allocated and nothing can fail. The fastest way that the processor has is chosen at
 * the first call; the results do not depend on it. No state is shared: everything may run at the
 * same time.
 */
#ifndef KESTU_SUM_H
#define KESTU_SUM_H

#include "kestu_defs.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/*
 * Continues `crc`, which is 0 at the start, over the `len` bytes at `buf`; an empty buffer leaves
 * it as it is and a null one gives 0. kestu_util_crc32 is the reflected CRC with the polynomial
 * 0xEDB88320 (0x04C11DB7), complemented at both ends; kestu_util_crc16 the one with 0xA001
 * (0x8005), not complemented, and takes the low 16 bits of `crc`. Over "123456789" they give
 * 0xCBF43926 and 0xBB3D.
 */
KESTU_API uint32_t kestu_util_crc32(uint32_t crc, const unsigned char *buf, size_t len);
KESTU_API uint16_t kestu_util_crc16(uint32_t crc, const unsigned char *buf, size_t len);

KESTU_END_DECLS

#endif
