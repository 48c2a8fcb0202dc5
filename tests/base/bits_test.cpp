// Bit fields, scans and counts.
#include "support/test.hpp"

#include <bitset>

TEST(Bits, FieldsAreMovedDownToBitZeroAndThoseThatAreNoneYieldZero) {
    constexpr uint32_t word = 0x92345679;
    for (uint8_t low = 0; low < 34; ++low)
        for (uint8_t high = 0; high < 34; ++high) {
            uint64_t field = 0;
            for (unsigned bit = low; bit <= high && bit < 32; ++bit)
                field |= static_cast<uint64_t>(word >> bit & 1) << (bit - low);
            EXPECT_EQ(kestu_util_get_bits_from_word(word, low, high), field) << low << high;
        }
    EXPECT_EQ(kestu_util_get_bits_from_word(0xFFFFFFFF, 255, 255), 0u);
}

TEST(Bits, TheReverseScanFindsTheHighestBit) {
    uint32_t index = 77;
    EXPECT_EQ(kestu_util_bit_scan_reverse(&index, 0), 0);
    EXPECT_EQ(index, 77u);
    for (uint32_t bit = 0; bit < 64; ++bit) {
        EXPECT_NE(kestu_util_bit_scan_reverse(&index, uint64_t{1} << bit | bit % 2), 0);
        EXPECT_EQ(index, bit);
    }
}

TEST(Bits, MasksFitTheirFieldAndKeepTheirOddEnds) {
    const struct {
        uint32_t count, width, mask;
    } cases[] = {{0, 63, 0x7FFFFFFF},
                 {1, 0, 0},
                 {2, 1, 0x1},
                 {4, 2, 0x3},
                 {5, 3, 0x7},
                 {1u << 30, 30, 0x3FFFFFFF},
                 {(1u << 30) + 1, 31, 0xFFFFFFFF},
                 {1u << 31, 31, 0xFFFFFFFF},
                 {(1u << 31) + 1, 32, 0}};
    for (const auto &c : cases) {
        uint32_t width = 99;
        EXPECT_EQ(kestu_util_create_mask(c.count, &width), c.mask) << c.count;
        EXPECT_EQ(width, c.width) << c.count;
        EXPECT_EQ(kestu_util_create_mask(c.count, nullptr), c.mask) << c.count;
    }
}

TEST(Bits, CountsAgreeWithCountingOneByOne) {
    std::mt19937_64 random(1);
    for (const uint64_t value : {random(), random(), random(), UINT64_MAX, uint64_t{0}}) {
        EXPECT_EQ(kestu_util_nsb64(value), static_cast<int>(std::bitset<64>(value).count()));
        EXPECT_EQ(kestu_util_nsb32(static_cast<uint32_t>(value)),
                  static_cast<int>(std::bitset<32>(value).count()));
    }
}
