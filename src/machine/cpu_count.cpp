// The counting. Sorted by their places, the processors of a package, and of a core, are neighbours.
#include "machine/cpu_count.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <numeric>
#include <tuple>

namespace kestu {
namespace {

using Indices = std::array<uint16_t, KESTU_CPU_MAX_PROCESSORS>;

// The indices of the record's processors in the order of a key.
template <typename Key>
std::span<const uint16_t> sorted_by(Key key, const kestu_cpu_t &record, Indices &indices) {
    const auto end = indices.begin() + record.thread_count;
    std::iota(indices.begin(), end, uint16_t{0});
    std::sort(indices.begin(), end, [&](uint16_t a, uint16_t b) {
        return key(record.processors[a]) < key(record.processors[b]);
    });
    return {indices.begin(), end};
}

auto place(const kestu_cpu_processor_t &p) {
    return std::tie(p.package, p.core, p.thread);
}

uint32_t shifted(uint32_t value, uint32_t width) {
    return width < 32 ? value >> width : 0;
}

bool has_one_thread(const Visit &visit) {
    return visit.processor.id.split.package_mask == 0xFFFFFFFF;
}

bool is_partition(const kestu_cpu_split_t &split) {
    const uint64_t sum = uint64_t{split.thread_mask} + split.core_mask + split.package_mask;
    return sum == 0xFFFFFFFF && (split.thread_mask & split.core_mask) == 0;
}

bool same_split(const kestu_cpu_split_t &a, const kestu_cpu_split_t &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

void place_processor(const Visit &visit, uint32_t identifier, kestu_cpu_processor_t &p) {
    const kestu_cpu_split_t &split = visit.processor.id.split;
    p = {};
    p.index = visit.index;
    p.apic_id = visit.processor.apic_id;
    p.thread = identifier & split.thread_mask;
    p.core = shifted(identifier & split.core_mask, split.thread_width);
    p.package = shifted(identifier & split.package_mask, split.core_and_thread_width);
    p.mhz = visit.mhz;
    std::fill(std::begin(p.cache), std::end(p.cache), KESTU_CPU_NO_CACHE);
}

bool all_places_differ(const kestu_cpu_t &record) {
    Indices indices;
    const auto order = sorted_by(place, record, indices);
    const auto same = [&](uint16_t a, uint16_t b) {
        return place(record.processors[a]) == place(record.processors[b]);
    };
    return std::adjacent_find(order.begin(), order.end(), same) == order.end();
}

// What tells the visited processors apart: the identifiers that they told, or the operating
// system's indices. Processors from before there were identifiers all answer 0, each in a package
// of its own.
class Identifiers {
  public:
    Identifiers(std::span<const Visit> visits, bool told) : visits_(visits), told_(told) {}

    uint32_t operator[](size_t i) const {
        return told_ ? visits_[i].processor.apic_id : visits_[i].index;
    }

  private:
    std::span<const Visit> visits_;
    bool told_;
};

void place_processors(std::span<const Visit> visits, const Identifiers &identifiers,
                      kestu_cpu_t &record) {
    for (size_t i = 0; i < visits.size(); ++i)
        place_processor(visits[i], identifiers[i], record.processors[i]);
}

void count_places(kestu_cpu_t &record) {
    record.package_count = record.core_count = 0;
    const kestu_cpu_processor_t *previous = nullptr;
    Indices indices;
    for (const uint16_t i : sorted_by(place, record, indices)) {
        const kestu_cpu_processor_t &p = record.processors[i];
        const bool new_package = !previous || previous->package != p.package;
        if (new_package)
            record.packages[record.package_count++] = {
                .package = p.package, .core_count = 0, .thread_count = 0};
        kestu_cpu_package_t &package = record.packages[record.package_count - 1];
        if (new_package || previous->core != p.core) {
            record.cores[record.core_count++] = {
                .package = p.package, .core = p.core, .thread_count = 0};
            ++package.core_count;
        }
        ++record.cores[record.core_count - 1].thread_count;
        ++package.thread_count;
        previous = &p;
    }
}

bool same_kind(const kestu_cpu_cache_t &kind, const Cache &cache) {
    return cache == Cache{.level = kind.level,
                          .type = kind.type,
                          .size_kb = kind.size_kb,
                          .line = kind.line,
                          .ways = kind.ways,
                          .partitions = kind.partitions,
                          .sets = kind.sets,
                          .shared_by = kind.shared_by};
}

// The index of the kind that `cache` is of, which is added when it is new; the number of kinds that
// there is room for when there is none.
uint32_t kind_of(const Cache &cache, kestu_cpu_t &record) {
    uint32_t kind = 0;
    while (kind < record.cache_count && !same_kind(record.caches[kind], cache))
        ++kind;
    if (kind == record.cache_count && kind < KESTU_CPU_MAX_CACHES)
        store_cache(cache, record.caches[record.cache_count++]);
    return kind;
}

// A processor that describes no caches is taken to have four levels.
void assume_caches(const kestu_cpu_intel_t &intel, uint32_t identifier, kestu_cpu_processor_t &p) {
    for (size_t level = 0; level < std::size(intel.cache_mask); ++level)
        p.cache[level] = shifted(identifier, intel.cache_mask_width[level]);
}

Flaw collect_caches(std::span<const Visit> visits, const Identifiers &identifiers,
                    kestu_cpu_t &record) {
    record.cache_count = 0;
    for (size_t i = 0; i < visits.size(); ++i) {
        const Processor &processor = visits[i].processor;
        for (uint32_t k = 0; k < processor.cache_count; ++k) {
            const uint32_t kind = kind_of(processor.caches[k], record);
            if (kind == KESTU_CPU_MAX_CACHES)
                return Flaw::too_many_cache_kinds;
            record.processors[i].cache[kind] =
                shifted(identifiers[i], record.caches[kind].sharing_width);
        }
        if (processor.cache_count == 0 && processor.id.highest_leaf < 3)
            assume_caches(processor.id.intel, identifiers[i], record.processors[i]);
    }
    return Flaw::none;
}

void count_caches(kestu_cpu_t &record) {
    Indices indices;
    for (uint32_t kind = 0; kind < record.cache_count; ++kind) {
        const auto id = [kind](const kestu_cpu_processor_t &p) { return p.cache[kind]; };
        uint32_t count = 0;
        uint32_t last = KESTU_CPU_NO_CACHE;
        for (const uint16_t i : sorted_by(id, record, indices)) {
            const uint32_t found = id(record.processors[i]);
            count += found != last && found != KESTU_CPU_NO_CACHE;
            last = found;
        }
        record.caches[kind].count = count;
    }
}

} // namespace

Flaw count_topology(std::span<const Visit> visits, kestu_cpu_t &record) {
    if (visits.empty() || visits.size() > KESTU_CPU_MAX_PROCESSORS)
        return Flaw::no_processor;
    for (const Visit &visit : visits) {
        if (!is_partition(visit.processor.id.split))
            return Flaw::overlapping_fields;
        if (!same_split(visit.processor.id.split, visits[0].processor.id.split))
            return Flaw::different_splits;
    }
    record.thread_count = static_cast<uint32_t>(visits.size());
    Identifiers identifiers(visits, true);
    place_processors(visits, identifiers, record);
    if (!all_places_differ(record)) {
        if (!has_one_thread(visits[0]))
            return Flaw::same_identifier;
        identifiers = Identifiers(visits, false);
        place_processors(visits, identifiers, record);
    }
    count_places(record);
    const Flaw flaw = collect_caches(visits, identifiers, record);
    count_caches(record);
    return flaw;
}

} // namespace kestu
