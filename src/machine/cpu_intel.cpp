// Intel's rules.
#include "machine/cpu_decode.hpp"

#include "error/error.hpp"
#include "kestu_str.h"
#include "kestu_util.h"
#include "machine/cpu_flags.hpp"
#include "machine/cpu_identity.hpp"
#include "machine/cpu_intel_names.hpp"

#include <iterator>

namespace kestu {
namespace {

constexpr uint32_t all_ones = 0xFFFFFFFF;

// The leaf numbers its levels with eight bits.
constexpr uint32_t max_topology_levels = 256;

// Firmware that hides standard leaves still shows the extended ones of a processor that should have
// more. Only the processor of one signature really has no more standard leaves.
bool is_restricted(const kestu_cpu_id_t &id) {
    return id.highest_leaf < 5 && id.highest_extended_leaf > 0x80000004 &&
           (id.signature & 0x0FFF0FF0) != 0x10650;
}

void decode_identity(const Leaves &leaves, kestu_cpu_id_t &id) {
    id.highest_leaf = leaves(0).eax;
    id.highest_extended_leaf = leaves(0x80000000).eax;
    const Leaf leaf1 = leaves(1);
    decode_signature(leaf1, id);
    decode_flags(leaf1, FlagSet::all, id.flags);
    id.intel.restricted = is_restricted(id);
    if (id.highest_leaf > 10) {
        const Leaf leaf_b = leaves(0xB);
        if (leaf_b.ebx != 0) {
            id.intel.leaf_b = 1;
            id.initial_apic_id = leaf_b.edx;
        }
    }
    if (id.highest_extended_leaf > 0x80000000)
        id.intel.lm = kestu_cpu_check_flag(29, leaves(0x80000001).edx);
}

// Leaf 0xB has a subleaf for each level. Each tells how many low bits of the identifier belong to
// its level and those below.
kestu_error_t *split_by_leaf_b(const Leaves &leaves, kestu_cpu_split_t &split) {
    enum { thread_level = 1, core_level = 2 };
    bool has_threads = false;
    bool has_cores = false;
    uint32_t core_and_thread_mask = 0;
    split = {};
    for (uint32_t level = 0; level < max_topology_levels; ++level) {
        const Leaf leaf = leaves(0xB, level);
        if (leaf.ebx == 0)
            break;
        const uint32_t type = bits(leaf.ecx, 8, 15);
        const uint32_t shift = bits(leaf.eax, 0, 4);
        if (type == thread_level) {
            has_threads = true;
            split.thread_width = shift;
            split.thread_mask = ~(all_ones << shift);
        } else if (type == core_level) {
            has_cores = true;
            split.core_and_thread_width = shift;
            split.package_mask = all_ones << shift;
            core_and_thread_mask = ~split.package_mask;
        }
    }
    if (!has_threads)
        return fail(KESTU_ERR_NO_THREAD_LEVEL);
    if (has_cores) {
        split.core_mask = core_and_thread_mask ^ split.thread_mask;
    } else {
        split.core_and_thread_width = split.thread_width;
        split.package_mask = ~split.thread_mask;
    }
    split.core_width = split.core_and_thread_width - split.thread_width;
    return nullptr;
}

// Without leaf 0xB, fields are as wide as the numbers of threads and cores need. A processor that
// contradicts itself may give a width of 32 bits or more, of which the processor's own shifts would
// use the low five bits too.
kestu_error_t *split_by_counts(const Leaves &leaves, const kestu_cpu_id_t &id,
                               kestu_cpu_split_t &split) {
    uint32_t threads = id.logical_processors;
    uint32_t cores = 1;
    if (id.highest_leaf > 3) {
        cores = bits(leaves(4).eax, 26, 31) + 1;
        threads /= cores;
    } else if (id.intel.restricted) {
        return fail(KESTU_ERR_CPUID_RESTRICTED);
    }
    split.thread_mask = kestu_util_create_mask(threads, &split.thread_width);
    split.core_mask = kestu_util_create_mask(cores, &split.core_width);
    split.core_and_thread_width = split.core_width + split.thread_width;
    split.core_mask <<= split.thread_width % 32;
    split.package_mask = ~(split.thread_mask | split.core_mask);
    return nullptr;
}

kestu_error_t *decode_split(const Leaves &leaves, kestu_cpu_id_t &id) {
    if (!id.flags.htt) {
        id.split = whole_package;
        return nullptr;
    }
    if (id.intel.leaf_b)
        return split_by_leaf_b(leaves, id.split);
    return split_by_counts(leaves, id, id.split);
}

// Leaf 2 describes caches by one-byte descriptors and says how often it is to be read. It is read
// for programs that record the leaves, and not decoded.
void read_descriptors(const Leaves &leaves) {
    const uint32_t times = bits(leaves(2).eax, 0, 3);
    for (uint32_t i = 1; i < times; ++i)
        leaves(2);
}

void assume_sharing(kestu_cpu_id_t &id) {
    const uint32_t sharing = id.flags.htt ? id.logical_processors : 1;
    for (uint32_t level = 0; level < std::size(id.intel.cache_mask); ++level)
        id.intel.cache_mask[level] =
            kestu_util_create_mask(sharing, &id.intel.cache_mask_width[level]);
}

kestu_error_t *decode(const Leaves &leaves, Processor &processor) {
    kestu_cpu_id_t &id = processor.id;
    decode_identity(leaves, id);
    processor.apic_id = id.initial_apic_id;
    if (kestu_error_t *err = decode_split(leaves, id))
        return wrap(err, "Error in Intel CPUID processing.");
    if (id.highest_leaf > 3) {
        processor.cache_count = decode_caches(leaves, 4, processor.caches);
    } else if (id.highest_leaf < 3) {
        read_descriptors(leaves);
        assume_sharing(id);
    }
    return nullptr;
}

void copy_name(const Leaves &leaves, const kestu_cpu_id_t &id, char (&name)[80]) {
    if (id.highest_extended_leaf > 0x80000003)
        kestu_str_strlcpy(name, brand_text(leaves).text, sizeof name);
    else if (const char *known = intel_name(id))
        kestu_str_strlcpy(name, known, sizeof name);
}

} // namespace

constinit const Rules intel_rules = {
    .decode = decode,
    .name = copy_name,
    .flaw_text = "Intel CPU topology detection error %d.",
    .flaw_numbers = {1, 2, 3, 4, 6},
};

} // namespace kestu
