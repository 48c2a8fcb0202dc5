// From leaves to what one logical processor is: pure functions, one set a vendor.
#pragma once

#include "kestu_cpu.h"
#include "machine/cpu_cache.hpp"
#include "machine/cpu_leaf.hpp"

namespace kestu {

// What one logical processor tells of itself.
struct Processor {
    kestu_cpu_id_t id;
    uint32_t apic_id; // the widest that it has
    uint32_t cache_count;
    Cache caches[KESTU_CPU_MAX_CACHES];
};

// How a vendor's processors are read.
struct Rules {
    kestu_error_t *(*decode)(const Leaves &leaves, Processor &processor);
    // Writes the name, or leaves it alone when there is none.
    void (*name)(const Leaves &leaves, const kestu_cpu_id_t &id, char (&name)[80]);
    // The message of a flaw, and the number in it for each Flaw but none.
    const char *flaw_text;
    int flaw_numbers[5];
};

extern const Rules intel_rules;
extern const Rules amd_rules;

// Reads the processor that the thread runs on into `processor`.
kestu_error_t *read_processor(const Rules &rules, Processor &processor);

// Puts identification, name and caches of the processor that the thread runs on into the record.
void store_processor(const Rules &rules, const Processor &processor, kestu_cpu_t &record);

} // namespace kestu
