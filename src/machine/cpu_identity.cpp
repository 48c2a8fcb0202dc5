#include "machine/cpu_identity.hpp"

namespace kestu {

void decode_signature(const Leaf &leaf1, kestu_cpu_id_t &id) {
    id.stepping = bits(leaf1.eax, 0, 3);
    id.model = bits(leaf1.eax, 4, 7);
    id.family = bits(leaf1.eax, 8, 11);
    id.type = bits(leaf1.eax, 12, 13);
    id.extended_model = bits(leaf1.eax, 16, 19);
    id.extended_family = bits(leaf1.eax, 20, 27);
    id.signature = leaf1.eax;
    id.display_family = id.family + id.extended_family;
    id.display_model = id.model + (id.extended_model << 4);
    id.brand_index = bits(leaf1.ebx, 0, 7);
    id.logical_processors = bits(leaf1.ebx, 16, 23);
    id.initial_apic_id = bits(leaf1.ebx, 24, 31);
}

} // namespace kestu
