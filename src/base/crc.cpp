// The C edge of the CRCs.
#include "kestu_sum.h"

#include "base/crc_kernel.hpp"

using namespace kestu;

// Kept: an empty buffer keeps the CRC, a null one gives 0. Relied on by: callers without a buffer.
uint32_t kestu_util_crc32(uint32_t crc, const unsigned char *buf, size_t len) {
    return buf ? ~crc_dispatch.current().crc32(~crc, buf, len) : 0;
}

uint16_t kestu_util_crc16(uint32_t crc, const unsigned char *buf, size_t len) {
    return buf ? crc_dispatch.current().crc16(static_cast<uint16_t>(crc), buf, len) : 0;
}
