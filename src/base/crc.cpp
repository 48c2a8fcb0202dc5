// The C edge of the CRCs.
#include "kestu_sum.h"

#include "base/crc_kernel.hpp"

using namespace kestu;

namespace {

// The remainder of a product of two polynomials.
template <typename Crc>
typename Crc::Word times(typename Crc::Word a, typename Crc::Word b) {
    using Word = typename Crc::Word;
    Word product = 0;
    for (Word power = Word{1} << (Crc::width - 1); power != 0; power >>= 1, b = Crc::times_x(b))
        if (a & power)
            product ^= b;
    return product;
}

// The CRC of two texts one after the other: that of the first, moved by the size of the second, and
// that of the second. What complements do to them cancels out.
template <typename Crc>
typename Crc::Word combine(typename Crc::Word first, typename Crc::Word second, uint64_t size) {
    auto square = Crc::power_of_x(8); // one byte, and then 2, 4, 8, ...
    for (; size > 0; size >>= 1, square = times<Crc>(square, square))
        if (size & 1)
            first = times<Crc>(first, square);
    return first ^ second;
}

} // namespace

// Kept: an empty buffer keeps the CRC, a null one gives 0. Relied on by: callers without a buffer.
uint32_t kestu_util_crc32(uint32_t crc, const unsigned char *buf, size_t len) {
    return buf ? ~crc_dispatch.current().crc32(~crc, buf, len) : 0;
}

uint16_t kestu_util_crc16(uint32_t crc, const unsigned char *buf, size_t len) {
    return buf ? crc_dispatch.current().crc16(static_cast<uint16_t>(crc), buf, len) : 0;
}

uint32_t kestu_util_crc32c(uint32_t crc, const unsigned char *buf, size_t len) {
    return buf ? ~crc_dispatch.current().crc32c(~crc, buf, len) : 0;
}

uint32_t kestu_util_crc32_combine(uint32_t first, uint32_t second, uint64_t size) {
    return combine<Crc32>(first, second, size);
}

uint32_t kestu_util_crc32c_combine(uint32_t first, uint32_t second, uint64_t size) {
    return combine<Crc32c>(first, second, size);
}

uint16_t kestu_util_crc16_combine(uint32_t first, uint32_t second, uint64_t size) {
    return combine<Crc16>(static_cast<uint16_t>(first), static_cast<uint16_t>(second), size);
}
