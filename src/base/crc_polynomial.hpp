// The polynomials over GF(2) behind reflected CRCs, and what is derived from them at compile time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace kestu {

// A CRC whose register is shifted to the right: bit 0 of a word is the coefficient of the highest
// power and its top bit that of x^0. `Polynomial` lacks its leading term x^width.
template <typename Register, Register Polynomial>
struct ReflectedCrc {
    using Word = Register;
    static constexpr int width = std::numeric_limits<Word>::digits;
    static constexpr Word polynomial = Polynomial;

    static constexpr Word times_x(Word remainder) {
        return static_cast<Word>((remainder >> 1) ^ ((remainder & 1) != 0 ? Polynomial : 0));
    }

    // The remainder of x^power.
    static consteval Word power_of_x(int power) {
        Word remainder = static_cast<Word>(Word{1} << (width - 1));
        for (int i = 0; i < power; ++i)
            remainder = times_x(remainder);
        return remainder;
    }
};

using Crc32 = ReflectedCrc<uint32_t, 0xEDB88320>;  // of zlib and IEEE 802.3
using Crc32c = ReflectedCrc<uint32_t, 0x82F63B78>; // of iSCSI and ext4 (Castagnoli)
using Crc16 = ReflectedCrc<uint16_t, 0xA001>;      // ARC

// What a step of the tables reads; also the number of tables.
constexpr size_t crc_slices = 8;

// tables[0] holds the remainder of every byte; tables[i] that of the byte with i zero bytes behind.
template <typename Crc>
using CrcTables = std::array<std::array<typename Crc::Word, 256>, crc_slices>;

template <typename Crc>
consteval CrcTables<Crc> make_crc_tables() {
    using Word = typename Crc::Word;
    CrcTables<Crc> tables{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        Word remainder = static_cast<Word>(byte);
        for (int bit = 0; bit < 8; ++bit)
            remainder = Crc::times_x(remainder);
        tables[0][byte] = remainder;
    }
    for (size_t slice = 1; slice < crc_slices; ++slice)
        for (size_t byte = 0; byte < 256; ++byte) {
            const Word before = tables[slice - 1][byte];
            tables[slice][byte] = static_cast<Word>((before >> 8) ^ tables[0][before & 0xFF]);
        }
    return tables;
}

} // namespace kestu
