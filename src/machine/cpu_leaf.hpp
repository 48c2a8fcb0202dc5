// What a processor tells of itself: a table of leaves, and where it comes from.
#pragma once

#include "kestu_util.h"

#include <cstdint>

namespace kestu {

struct Leaf {
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
};

// Bits `from` to `to` of a register, moved down to bit 0.
inline uint32_t bits(uint32_t word, uint8_t from, uint8_t to) {
    return kestu_util_get_bits_from_word(word, from, to);
}

// The leaves of one logical processor. Everything that decodes asks such a table and nothing else.
struct Leaves {
    Leaf (*read)(const void *table, uint32_t leaf, uint32_t subleaf);
    const void *table;

    Leaf operator()(uint32_t leaf, uint32_t subleaf = 0) const {
        return read(table, leaf, subleaf);
    }
};

// The leaves of the processor that the thread runs on, or of what the program puts in its place.
Leaves running_processor();

// The twelve characters that leaf 0 identifies the vendor by, terminated.
struct VendorId {
    char text[13];
};
VendorId vendor_id(const Leaf &leaf0);

// The 48 characters of leaves 0x80000002 to 0x80000004, terminated.
struct BrandText {
    char text[49];
};
BrandText brand_text(const Leaves &leaves);

} // namespace kestu
