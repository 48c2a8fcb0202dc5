// Visiting every logical processor, and the C edge of that.
#include "machine/cpu_topology.hpp"

#include "base/kept_errno.hpp"
#include "kestu_mach.h"
#include "machine/cpu_count.hpp"
#include "mem/memory.hpp"

#include <algorithm>

namespace kestu {
namespace {

constexpr int32_t every_processor = -1;

// Zeroed memory for `count` objects.
template <typename T>
kestu_error_t *make_zeroed(apr_pool_t *pool, T **made, size_t count) {
    kestu_error_t *err = pool_make(pool, made, count);
    if (!err)
        std::fill_n(*made, count, T{});
    return err;
}

bool wants_rate(const kestu_cpu_t &record, uint32_t cpu) {
    return record.measure != 0 && (record.measure_processor == every_processor ||
                                   static_cast<uint32_t>(record.measure_processor) == cpu);
}

// The first processor stands in the record from the moment that it was read, even when it or a
// later one makes detection fail.
kestu_error_t *visit_processor(const Rules &rules, uint32_t cpu, Visit &visit, kestu_cpu_t &record,
                               bool &identified) {
    if (kestu_error_t *err = kestu_cpu_bind_context_to_logcpu(cpu))
        return err;
    visit.index = cpu;
    kestu_error_t *err = read_processor(rules, visit.processor);
    if (!identified)
        store_processor(rules, visit.processor, record);
    identified = true;
    if (!err && wants_rate(record, cpu))
        visit.mhz = kestu_cpu_freq();
    return err;
}

kestu_error_t *visit_processors(const Rules &rules, const kestu_cpu_genaffinity &mask,
                                uint32_t count, Visit *visits, uint32_t &visited,
                                kestu_cpu_t &record, bool &identified) {
    visited = 0;
    for (uint32_t cpu = 0; cpu < count; ++cpu) {
        int is_there;
        kestu_error_t *err = cpuid_test_genaffinity_bit(&mask, cpu, &is_there);
        if (!err && is_there) {
            err = visit_processor(rules, cpu, visits[visited], record, identified);
            ++visited;
        }
        if (err)
            return err;
    }
    return nullptr;
}

kestu_error_t *fail_flaw(const Rules &rules, Flaw flaw) {
    if (flaw == Flaw::none)
        return nullptr;
    return fail(KESTU_ERR_TOPOLOGY, rules.flaw_text, rules.flaw_numbers[static_cast<size_t>(flaw)]);
}

} // namespace

kestu_error_t *detect_topology(const Rules &rules, kestu_cpu_t &record, apr_pool_t *pool,
                               bool &identified) {
    const KeptErrno kept;
    const auto count = static_cast<uint32_t>(std::max(kestu_mach_os_cpu_num(), 0));
    kestu_cpu_genaffinity mask = {.size = count / 8 + 1, .bits = nullptr};
    if (kestu_error_t *err = make_zeroed(pool, &mask.bits, mask.size))
        return err;
    if (kestu_error_t *err = kestu_cpu_set_chk_process_affinity_consistency(&mask, count))
        return err;
    Visit *visits = nullptr;
    if (kestu_error_t *err = make_zeroed(pool, &visits, count))
        return err;
    uint32_t visited;
    if (kestu_error_t *err =
            visit_processors(rules, mask, count, visits, visited, record, identified))
        return err;
    return fail_flaw(rules, count_topology({visits, visited}, record));
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_cpu_amd_topology(kestu_cpu_t *record, apr_pool_t *pool) {
    bool identified = false;
    return detect_topology(amd_rules, *record, pool, identified);
}

kestu_error_t *kestu_cpu_intel_topology(kestu_cpu_t *record, apr_pool_t *pool) {
    bool identified = false;
    return detect_topology(intel_rules, *record, pool, identified);
}
