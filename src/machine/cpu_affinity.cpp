// Affinity masks of any size.
#include "kestu_cpu.h"

#include "error/error.hpp"

#include <algorithm>
#include <cstring>

using namespace kestu;

namespace {

// Null when the mask has room for the processor; `action` is what could not be done.
kestu_error_t *check_bound(const kestu_cpu_genaffinity &mask, uint32_t cpu, const char *action) {
    const uint64_t capacity = uint64_t{mask.size} * 8;
    if (cpu < capacity)
        return nullptr;
    return fail(KESTU_ERR_AFFINITY, "Can't %s cpu %u bit (mask supports only up to %u cpus).",
                action, cpu, static_cast<uint32_t>(capacity));
}

uint8_t bit(uint32_t cpu) {
    return static_cast<uint8_t>(1 << cpu % 8);
}

} // namespace

void intel_cpuid_clear_genaffinity_mask(kestu_cpu_genaffinity *mask) {
    std::fill_n(mask->bits, mask->size, uint8_t{0});
}

kestu_error_t *intel_cpuid_set_genaffinity_bit(kestu_cpu_genaffinity *mask, uint32_t cpu) {
    kestu_error_t *err = check_bound(*mask, cpu, "set");
    if (!err)
        mask->bits[cpu / 8] |= bit(cpu);
    return err;
}

// Kept: a processor that is not there is added. Relied on by: callers that toggle processors.
kestu_error_t *intel_cpuid_clear_genaffinity_bit(kestu_cpu_genaffinity *mask, uint32_t cpu) {
    kestu_error_t *err = check_bound(*mask, cpu, "clear");
    if (!err)
        mask->bits[cpu / 8] ^= bit(cpu);
    return err;
}

kestu_error_t *cpuid_test_genaffinity_bit(const kestu_cpu_genaffinity *mask, uint32_t cpu,
                                          int *result) {
    kestu_error_t *err = check_bound(*mask, cpu, "test");
    if (!err)
        *result = (mask->bits[cpu / 8] & bit(cpu)) != 0;
    return err;
}

// Kept: two empty masks differ. Relied on by: callers for whom a mask of size 0 is an unknown one.
int intel_cpuid_cmp_equal_genaffinity(const kestu_cpu_genaffinity *a,
                                      const kestu_cpu_genaffinity *b) {
    const kestu_cpu_genaffinity &longer = a->size > b->size ? *a : *b;
    const uint32_t common = std::min(a->size, b->size);
    if (common == 0 || std::memcmp(a->bits, b->bits, common) != 0)
        return 1;
    return std::any_of(longer.bits + common, longer.bits + longer.size,
                       [](uint8_t byte) { return byte != 0; });
}
