// The C edge of the CRCs.
#include "kestu_sum.h"

#include "util/crc_table.hpp"

using namespace kestu;

// An empty buffer keeps the CRC while a missing one gives 0: callers tell the two apart.
uint32_t kestu_util_crc32(uint32_t crc, const unsigned char *buf, size_t len) {
    if (!buf)
        return 0;
    return ~crc_sliced<Crc32>(~crc, buf, len);
}

uint16_t kestu_util_crc16(uint32_t crc, const unsigned char *buf, size_t len) {
    if (!buf)
        return 0;
    return crc_sliced<Crc16>(static_cast<uint16_t>(crc), buf, len);
}
