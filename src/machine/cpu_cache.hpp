// Descriptions of caches.
#pragma once

#include "kestu_cpu.h"
#include "machine/cpu_leaf.hpp"

namespace kestu {

struct Cache {
    uint32_t level;
    uint32_t type;
    uint32_t size_kb;
    uint32_t line;
    uint32_t ways;
    uint32_t partitions;
    uint32_t sets;
    uint32_t shared_by;

    bool operator==(const Cache &) const = default;
};

// Reads the caches that `leaf`, which has a subleaf for each, describes, until the first of type 0,
// and returns how many there are. Leaf 4 is laid out so on Intel's processors, 0x8000001D on AMD's.
uint32_t decode_caches(const Leaves &leaves, uint32_t leaf, Cache (&caches)[KESTU_CPU_MAX_CACHES]);

// As decode_caches, from the descriptors of AMD's leaves 0x80000005 and 0x80000006. The third level
// is shared by the `package_threads` logical processors of a package.
uint32_t decode_descriptors(const Leaf &ext5, const Leaf &ext6, uint32_t package_threads,
                            Cache (&caches)[KESTU_CPU_MAX_CACHES]);

// Fills a cache of the record, texts and sharing mask included.
void store_cache(const Cache &cache, kestu_cpu_cache_t &stored);

} // namespace kestu
