// CRCs by tables alone.
#include "base/crc_table.hpp"

#include <cstring>

namespace kestu {
namespace {

template <typename Crc>
constexpr CrcTables<Crc> tables = make_crc_tables<Crc>();

} // namespace

template <typename Crc>
typename Crc::Word crc_bytewise(typename Crc::Word crc, const unsigned char *data, size_t size) {
    using Word = typename Crc::Word;
    for (; size > 0; --size)
        crc = static_cast<Word>((crc >> 8) ^ tables<Crc>[0][(crc ^ *data++) & 0xFF]);
    return crc;
}

template <typename Crc>
typename Crc::Word crc_sliced(typename Crc::Word crc, const unsigned char *data, size_t size) {
    using Word = typename Crc::Word;
    for (; size >= crc_slices; size -= crc_slices, data += crc_slices) {
        uint64_t step = 0;
        static_assert(sizeof step == crc_slices);
        std::memcpy(&step, data, crc_slices);
        step ^= crc;
        crc = 0;
        for (size_t i = 0; i < crc_slices; ++i)
            crc ^= tables<Crc>[crc_slices - 1 - i][(step >> (8 * i)) & 0xFF];
    }
    return crc_bytewise<Crc>(static_cast<Word>(crc), data, size);
}

template uint32_t crc_bytewise<Crc32>(uint32_t, const unsigned char *, size_t);
template uint32_t crc_bytewise<Crc32c>(uint32_t, const unsigned char *, size_t);
template uint16_t crc_bytewise<Crc16>(uint16_t, const unsigned char *, size_t);
template uint32_t crc_sliced<Crc32>(uint32_t, const unsigned char *, size_t);
template uint32_t crc_sliced<Crc32c>(uint32_t, const unsigned char *, size_t);
template uint16_t crc_sliced<Crc16>(uint16_t, const unsigned char *, size_t);

} // namespace kestu
