// Decoding caches and naming them.
#include "machine/cpu_cache.hpp"

#include "kestu_str.h"
#include "kestu_util.h"

#include <algorithm>
#include <iterator>

namespace kestu {
namespace {

constexpr const char *label_formats[] = {"Null", "L%dd", "L%di", "L%d", "L%d", ""};
constexpr const char *type_names[] = {"Null, end of cache_type list", "Data cache",
                                      "Instruction cache", "Unified cache"};

constexpr uint8_t fully_associative = 0xFF;

// The associativity of AMD's second and third levels comes as a code. 9 refers to a leaf that says
// more, 0 is a cache that is off.
constexpr uint8_t way_codes[16] = {0,  1, 2,  3,  4,  6,  8,   0,
                                   16, 0, 32, 48, 64, 96, 128, fully_associative};

Cache decode_cache(const Leaf &leaf) {
    Cache cache = {
        .level = bits(leaf.eax, 5, 7),
        .type = bits(leaf.eax, 0, 4),
        .size_kb = 0,
        .line = bits(leaf.ebx, 0, 11) + 1,
        .ways = bits(leaf.ebx, 22, 31) + 1,
        .partitions = bits(leaf.ebx, 12, 21) + 1,
        .sets = leaf.ecx + 1,
        .shared_by = bits(leaf.eax, 14, 25) + 1,
    };
    const uint64_t bytes = uint64_t{cache.ways} * cache.partitions * cache.line * cache.sets;
    cache.size_kb = static_cast<uint32_t>(bytes / 1024);
    return cache;
}

// A cache of `size_kb` with lines of `line` bytes. What cannot be computed from these is 0.
Cache described_cache(uint32_t level, uint32_t type, uint32_t size_kb, uint32_t ways,
                      uint32_t line) {
    const auto lines = static_cast<uint32_t>(line > 0 ? uint64_t{size_kb} * 1024 / line : 0);
    if (ways == fully_associative)
        ways = lines;
    return {.level = level,
            .type = type,
            .size_kb = size_kb,
            .line = line,
            .ways = ways,
            .partitions = 1,
            .sets = ways > 0 ? lines / ways : 0,
            .shared_by = 1};
}

Cache first_level(uint32_t type, uint32_t word) {
    return described_cache(1, type, bits(word, 24, 31), bits(word, 16, 23), bits(word, 0, 7));
}

Cache outer_level(uint32_t level, uint32_t size_kb, uint32_t word) {
    const uint32_t ways = way_codes[bits(word, 12, 15)];
    return described_cache(level, KESTU_CPU_CACHE_UNIFIED, size_kb, ways, bits(word, 0, 7));
}

} // namespace

uint32_t decode_caches(const Leaves &leaves, uint32_t leaf, Cache (&caches)[KESTU_CPU_MAX_CACHES]) {
    uint32_t count = 0;
    while (count < KESTU_CPU_MAX_CACHES) {
        const Cache cache = decode_cache(leaves(leaf, count));
        if (cache.type == KESTU_CPU_CACHE_NULL)
            break;
        caches[count++] = cache;
    }
    return count;
}

uint32_t decode_descriptors(const Leaf &ext5, const Leaf &ext6, uint32_t package_threads,
                            Cache (&caches)[KESTU_CPU_MAX_CACHES]) {
    Cache described[] = {
        first_level(KESTU_CPU_CACHE_DATA, ext5.ecx),
        first_level(KESTU_CPU_CACHE_INSTRUCTION, ext5.edx),
        outer_level(2, bits(ext6.ecx, 16, 31), ext6.ecx),
        outer_level(3, bits(ext6.edx, 18, 31) * 512, ext6.edx),
    };
    described[3].shared_by = package_threads;
    const auto last = std::copy_if(std::begin(described), std::end(described), std::begin(caches),
                                   [](const Cache &cache) { return cache.size_kb > 0; });
    return static_cast<uint32_t>(last - std::begin(caches));
}

void store_cache(const Cache &cache, kestu_cpu_cache_t &stored) {
    stored = {};
    stored.level = cache.level;
    stored.type = cache.type;
    stored.size_kb = cache.size_kb;
    stored.line = cache.line;
    stored.ways = cache.ways;
    stored.partitions = cache.partitions;
    stored.sets = cache.sets;
    stored.shared_by = cache.shared_by;
    stored.sharing_mask = kestu_util_create_mask(cache.shared_by, &stored.sharing_width);
    stored.count = 1;
    const char *label = cache.type < std::size(label_formats) ? label_formats[cache.type] : "";
    const char *type =
        cache.type < std::size(type_names) ? type_names[cache.type] : "cache type undefined";
    kestu_str_snprintf(stored.label, sizeof stored.label, label, static_cast<int>(cache.level));
    kestu_str_snprintf(stored.description, sizeof stored.description,
                       "Level %d %s, size(KBytes)= %d", static_cast<int>(cache.level), type,
                       static_cast<int>(cache.size_kb));
}

} // namespace kestu
