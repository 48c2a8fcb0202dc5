// Bit fields, scans and counts.
#include "kestu_util.h"

#include <bit>

uint32_t kestu_util_get_bits_from_word(uint32_t word, uint8_t from, uint8_t to) {
    const uint32_t kept = to >= 31 ? word : word & ((uint32_t{1} << (to + 1)) - 1);
    return from > 31 ? 0 : kept >> from;
}

unsigned char kestu_util_bit_scan_reverse(uint32_t *index, uint64_t mask) {
    if (mask == 0)
        return 0;
    *index = static_cast<uint32_t>(std::bit_width(mask) - 1);
    return 1;
}

// Kept: the ends of the range follow the arithmetic and not the rule (count 0 gives width 63 and 31
// ones, counts above 2^31 give width 32 and no ones). Relied on by: the identification of
// processors.
uint32_t kestu_util_create_mask(uint32_t count, uint32_t *width) {
    uint32_t top = 0;
    const bool found = kestu_util_bit_scan_reverse(&top, uint64_t{count} * 2 - 1) != 0;
    if (width)
        *width = top;
    if (!found)
        return 0;
    return top == 31 ? 0xFFFFFFFF : (uint32_t{1} << (top % 32)) - 1;
}

int kestu_util_nsb32(uint32_t value) {
    return kestu_util_nsb64(value);
}

// The pairwise sums need no population-count instruction, which a plain x86-64 processor may lack.
int kestu_util_nsb64(uint64_t value) {
    value -= (value >> 1) & 0x5555555555555555;
    value = (value & 0x3333333333333333) + ((value >> 2) & 0x3333333333333333);
    value = (value + (value >> 4)) & 0x0F0F0F0F0F0F0F0F;
    return static_cast<int>((value * 0x0101010101010101) >> 56);
}
