// Counting packages, cores, threads and caches from what each logical processor tells of itself.
#pragma once

#include "machine/cpu_decode.hpp"

#include <span>

namespace kestu {

// One logical processor that was visited.
struct Visit {
    uint32_t index;
    double mhz;
    Processor processor;
};

// What processors that contradict each other get wrong.
enum class Flaw {
    no_processor,         // none was visited, or more than the record holds
    same_identifier,      // two carry one identifier
    overlapping_fields,   // the fields of an identifier overlap or leave bits out
    different_splits,     // processors split their identifiers in different places
    too_many_cache_kinds, // more kinds of caches than the record holds
    none,
};

// Fills the topology results of the record. After a flaw they are incomplete.
Flaw count_topology(std::span<const Visit> visits, kestu_cpu_t &record);

} // namespace kestu
