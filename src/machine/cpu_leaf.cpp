// Reading leaves and the texts in them.
#include "machine/cpu_leaf.hpp"

#include "kestu_cpu.h"

#include <cstring>

namespace kestu {

Leaves running_processor() {
    constexpr auto read = [](const void *, uint32_t leaf, uint32_t subleaf) {
        Leaf found;
        kestu_cpu_cpuid_comm(leaf, subleaf, &found.eax, &found.ebx, &found.ecx, &found.edx);
        return found;
    };
    return {.read = read, .table = nullptr};
}

VendorId vendor_id(const Leaf &leaf0) {
    const uint32_t words[] = {leaf0.ebx, leaf0.edx, leaf0.ecx};
    VendorId id = {};
    std::memcpy(id.text, words, sizeof words);
    return id;
}

BrandText brand_text(const Leaves &leaves) {
    BrandText brand = {};
    for (uint32_t i = 0; i < 3; ++i) {
        const Leaf part = leaves(0x80000002 + i);
        static_assert(sizeof part == 16);
        std::memcpy(brand.text + i * sizeof part, &part, sizeof part);
    }
    return brand;
}

} // namespace kestu
