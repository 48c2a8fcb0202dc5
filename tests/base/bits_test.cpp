// Bit fields, scans and counts.
#include "kestu_util.h"

#include <gtest/gtest.h>

TEST(Bits, AFieldIsMovedDownToBitZero) {
    EXPECT_EQ(kestu_util_get_bits_from_word(0xFFFFFFFF, 26, 31), 0x3Fu);
    EXPECT_EQ(kestu_util_get_bits_from_word(0x12345678, 8, 15), 0x56u);
    EXPECT_EQ(kestu_util_get_bits_from_word(0x12345678, 0, 31), 0x12345678u);
    EXPECT_EQ(kestu_util_get_bits_from_word(0xFFFFFFFF, 0, 30), 0x7FFFFFFFu);
    EXPECT_EQ(kestu_util_get_bits_from_word(0x80000001, 31, 31), 1u);
    EXPECT_EQ(kestu_util_get_bits_from_word(0x80000001, 0, 0), 1u);
}

TEST(Bits, FieldsThatAreNoneYieldZero) {
    for (const uint32_t word : {0xFFFFFFFFu, 0x12345678u})
        EXPECT_EQ(kestu_util_get_bits_from_word(word, 5, 3), 0u);
    EXPECT_EQ(kestu_util_get_bits_from_word(0xFFFFFFFF, 32, 31), 0u);
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
    EXPECT_NE(kestu_util_bit_scan_reverse(&index, UINT64_MAX), 0);
    EXPECT_EQ(index, 63u);
}

TEST(Bits, MasksFitTheirFieldAndKeepTheirOddEnds) {
    const struct {
        uint32_t count, width, mask;
    } cases[] = {
        {0, 63, 0x7FFFFFFF},
        {1, 0, 0},
        {2, 1, 0x1},
        {3, 2, 0x3},
        {4, 2, 0x3},
        {5, 3, 0x7},
        {8, 3, 0x7},
        {9, 4, 0xF},
        {1u << 30, 30, 0x3FFFFFFF},
        {(1u << 30) + 1, 31, 0xFFFFFFFF},
        {1u << 31, 31, 0xFFFFFFFF},
        {(1u << 31) + 1, 32, 0},
        {0xFFFFFFFF, 32, 0},
    };
    for (const auto &c : cases) {
        uint32_t width = 99;
        EXPECT_EQ(kestu_util_create_mask(c.count, &width), c.mask) << c.count;
        EXPECT_EQ(width, c.width) << c.count;
        EXPECT_EQ(kestu_util_create_mask(c.count, nullptr), c.mask) << c.count;
    }
}

TEST(Bits, CountsAgreeWithCountingOneByOne) {
    uint64_t value = 0x9E3779B97F4A7C15;
    for (int round = 0; round < 1000; ++round) {
        int in64 = 0, in32 = 0;
        for (int bit = 0; bit < 64; ++bit) {
            in64 += value >> bit & 1;
            in32 += bit < 32 && (value >> bit & 1);
        }
        ASSERT_EQ(kestu_util_nsb64(value), in64) << value;
        ASSERT_EQ(kestu_util_nsb32(static_cast<uint32_t>(value)), in32) << value;
        value = value * 6364136223846793005u + 1442695040888963407u;
    }
    EXPECT_EQ(kestu_util_nsb64(UINT64_MAX), 64);
    EXPECT_EQ(kestu_util_nsb32(UINT32_MAX), 32);
    EXPECT_EQ(kestu_util_nsb64(0) + kestu_util_nsb32(0), 0);
}
