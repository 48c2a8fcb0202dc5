// AMD's rules.
#include "machine/cpu_decode.hpp"

#include "kestu_str.h"
#include "kestu_util.h"
#include "machine/cpu_amd_names.hpp"
#include "machine/cpu_flags.hpp"
#include "machine/cpu_identity.hpp"

#include <algorithm>

namespace kestu {
namespace {

// Leaves beyond these are unknown. A processor that claims to have more is not asked for them.
constexpr uint32_t last_leaf = 0xFF;
constexpr uint32_t last_extended_leaf = 0x800000FF;

// From Zen on, a field counts the threads of a core that before counted the cores of a module.
constexpr uint32_t first_family_with_threads = 0x17;

bool has_leaf(const kestu_cpu_id_t &id, uint32_t leaf) {
    return leaf <= (leaf < 0x80000000 ? id.highest_leaf : id.highest_extended_leaf);
}

// Bit 22 of ECX in leaf 0x80000001 tells that leaves 0x8000001D and 0x8000001E are there.
bool has_topology_extensions(const Leaves &leaves, const kestu_cpu_id_t &id) {
    return has_leaf(id, 0x8000001E) && kestu_cpu_check_flag(22, leaves(0x80000001).ecx);
}

void decode_extended_leaf(uint32_t number, const Leaf &leaf, kestu_cpu_amd_t &amd) {
    switch (number) {
    case 0x80000001:
        amd.brand_id = bits(leaf.ebx, 0, 11);
        decode_amd_flags(leaf, amd);
        break;
    case 0x80000005:
        amd.l1_data = leaf.ecx;
        amd.l1_instruction = leaf.edx;
        break;
    case 0x80000006:
        amd.l2_kb = bits(leaf.ecx, 16, 31);
        amd.l3_kb = bits(leaf.edx, 18, 31) * 512;
        break;
    case 0x80000007:
        decode_amd_power_flags(leaf, amd);
        break;
    case 0x80000008:
        amd.physical_bits = bits(leaf.eax, 0, 7);
        amd.linear_bits = bits(leaf.eax, 8, 15);
        amd.cores_minus_one = bits(leaf.ecx, 0, 7);
        amd.apic_core_bits = bits(leaf.ecx, 12, 15);
        break;
    case 0x8000000A:
        amd.svm_revision = leaf.eax;
        amd.svm_asids = leaf.ebx;
        break;
    default:
        break;
    }
}

// All leaves are read, used or not, so that a program that records what is read has them all.
void decode_identity(const Leaves &leaves, kestu_cpu_id_t &id) {
    id.highest_leaf = leaves(0).eax;
    id.highest_extended_leaf = leaves(0x80000000).eax;
    for (uint32_t number = 1; number <= std::min(id.highest_leaf, last_leaf); ++number) {
        const Leaf leaf = leaves(number);
        if (number == 1) {
            decode_signature(leaf, id);
            decode_flags(leaf, FlagSet::common, id.flags);
        }
    }
    const uint32_t last = std::min(id.highest_extended_leaf, last_extended_leaf);
    for (uint32_t number = 0x80000001; number <= last; ++number)
        decode_extended_leaf(number, leaves(number), id.amd);
}

// The initial identifier has eight bits. A leaf may hold a wider one, which tells processors apart
// where there are more than 256. When its low byte is not the initial identifier, the firmware has
// renumbered the processors, and the initial one counts.
uint32_t widest_apic_id(const Leaves &leaves, const kestu_cpu_id_t &id) {
    uint32_t wide = id.initial_apic_id;
    if (has_leaf(id, 0xB) && leaves(0xB).ebx != 0)
        wide = leaves(0xB).edx;
    else if (has_topology_extensions(leaves, id))
        wide = leaves(0x8000001E).eax;
    return (wide & 0xFF) == id.initial_apic_id ? wide : id.initial_apic_id;
}

// The logical processors of a package; leaf 1 counts them where 0x80000008 does not.
uint32_t package_threads(const kestu_cpu_id_t &id) {
    if (id.amd.cores_minus_one > 0)
        return id.amd.cores_minus_one + 1;
    return id.flags.htt ? std::max(id.logical_processors, 1U) : 1;
}

uint32_t core_threads(const Leaves &leaves, const kestu_cpu_id_t &id) {
    if (id.display_family < first_family_with_threads || !has_topology_extensions(leaves, id))
        return 1;
    return bits(leaves(0x8000001E).ebx, 8, 15) + 1;
}

// The thread field is never wider than all fields together: a virtual machine may show the host's
// threads for each core and yet have fewer processors.
kestu_cpu_split_t decode_split(const Leaves &leaves, const kestu_cpu_id_t &id) {
    uint32_t width = id.amd.apic_core_bits;
    if (width == 0)
        kestu_util_create_mask(package_threads(id), &width);
    uint32_t thread_width;
    kestu_util_create_mask(core_threads(leaves, id), &thread_width);
    thread_width = std::min(thread_width, width);
    const uint32_t low_mask = (uint32_t{1} << width) - 1;
    const uint32_t thread_mask = (uint32_t{1} << thread_width) - 1;
    return {.thread_mask = thread_mask,
            .thread_width = thread_width,
            .core_mask = low_mask ^ thread_mask,
            .core_width = width - thread_width,
            .core_and_thread_width = width,
            .package_mask = ~low_mask};
}

uint32_t find_caches(const Leaves &leaves, Processor &processor) {
    const kestu_cpu_id_t &id = processor.id;
    uint32_t count = 0;
    if (has_topology_extensions(leaves, id))
        count = decode_caches(leaves, 0x8000001D, processor.caches);
    if (count > 0)
        return count;
    const Leaf ext5 = has_leaf(id, 0x80000005) ? leaves(0x80000005) : Leaf();
    const Leaf ext6 = has_leaf(id, 0x80000006) ? leaves(0x80000006) : Leaf();
    return decode_descriptors(ext5, ext6, package_threads(id), processor.caches);
}

kestu_error_t *decode(const Leaves &leaves, Processor &processor) {
    decode_identity(leaves, processor.id);
    processor.apic_id = widest_apic_id(leaves, processor.id);
    processor.id.split = decode_split(leaves, processor.id);
    processor.cache_count = find_caches(leaves, processor);
    return nullptr;
}

void copy_name(const Leaves &leaves, const kestu_cpu_id_t &id, char (&name)[80]) {
    if (has_leaf(id, 0x80000004))
        kestu_str_strlcpy(name, brand_text(leaves).text, sizeof name);
    else
        amd_name(bits(id.signature, 0, 7), id.amd.brand_id, name);
}

} // namespace

constinit const Rules amd_rules = {
    .decode = decode,
    .name = copy_name,
    .flaw_text = "AMD CPU topology detection error %d.",
    .flaw_numbers = {1, 1, 2, 2, 2},
};

} // namespace kestu
