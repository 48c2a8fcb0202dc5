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

// Visits processors one after the other and keeps what they tell.
struct Visits {
    const Rules &rules;
    kestu_cpu_t &record;
    bool &identified;
    bool leaves_out; // those that the thread cannot be bound to
    Visit *visits = nullptr;
    uint32_t count = 0;
    kestu_error_t *left_out = nullptr; // why the last one was

    // The first processor stands in the record from the moment that it was read, even when it or a
    // later one makes detection fail.
    kestu_error_t *visit(uint32_t cpu) {
        if (kestu_error_t *err = kestu_cpu_bind_context_to_logcpu(cpu)) {
            if (!leaves_out)
                return err;
            kestu_error_clear(left_out);
            left_out = err;
            return nullptr;
        }
        Visit &visit = visits[count++];
        visit.index = cpu;
        kestu_error_t *err = read_processor(rules, visit.processor);
        if (!identified)
            store_processor(rules, visit.processor, record);
        identified = true;
        if (!err && wants_rate(record, cpu))
            visit.mhz = kestu_cpu_freq();
        return err;
    }
};

bool is_in(const kestu_cpu_genaffinity &mask, uint32_t cpu) {
    return cpu / 8 < mask.size && (mask.bits[cpu / 8] >> cpu % 8 & 1);
}

kestu_error_t *visit_processors(const kestu_cpu_genaffinity &mask, uint32_t count, Visits &visits) {
    kestu_error_t *err = nullptr;
    for (uint32_t cpu = 0; cpu < count && !err; ++cpu)
        if (is_in(mask, cpu))
            err = visits.visit(cpu);
    if (!err && visits.count == 0) // nothing is known but why
        return visits.left_out;
    kestu_error_clear(visits.left_out);
    return err;
}

kestu_error_t *fail_flaw(const Rules &rules, Flaw flaw) {
    if (flaw == Flaw::none)
        return nullptr;
    return fail(KESTU_ERR_TOPOLOGY, rules.flaw_text, rules.flaw_numbers[static_cast<size_t>(flaw)]);
}

} // namespace

kestu_error_t *detect_topology(const Rules &rules, kestu_cpu_t &record,
                               const kestu_cpu_genaffinity *chosen, apr_pool_t *pool,
                               bool &identified) {
    const KeptErrno kept;
    auto count = static_cast<uint32_t>(std::max(kestu_mach_os_cpu_num(), 0));
    kestu_cpu_genaffinity mask;
    if (chosen) {
        mask = *chosen;
        count = std::min<uint64_t>(uint64_t{mask.size} * 8, KESTU_CPU_MAX_PROCESSORS);
        while (count > 0 && !is_in(mask, count - 1))
            --count;
    } else {
        mask = {.size = count / 8 + 1, .bits = nullptr};
        if (kestu_error_t *err = make_zeroed(pool, &mask.bits, mask.size))
            return err;
        if (kestu_error_t *err = kestu_cpu_set_chk_process_affinity_consistency(&mask, count))
            return err;
    }
    Visits visits = {.rules = rules,
                     .record = record,
                     .identified = identified,
                     .leaves_out = chosen != nullptr};
    if (kestu_error_t *err = make_zeroed(pool, &visits.visits, count))
        return err;
    if (kestu_error_t *err = visit_processors(mask, count, visits))
        return err;
    return fail_flaw(rules, count_topology({visits.visits, visits.count}, record));
}

} // namespace kestu

using namespace kestu;

kestu_error_t *kestu_cpu_amd_topology(kestu_cpu_t *record, apr_pool_t *pool) {
    bool identified = false;
    return detect_topology(amd_rules, *record, nullptr, pool, identified);
}

kestu_error_t *kestu_cpu_intel_topology(kestu_cpu_t *record, apr_pool_t *pool) {
    bool identified = false;
    return detect_topology(intel_rules, *record, nullptr, pool, identified);
}
