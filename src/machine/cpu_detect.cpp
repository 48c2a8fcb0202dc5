// Detection: the vendor, then the vendor's rules on every processor.
#include "kestu_cpu.h"

#include "base/kept_errno.hpp"
#include "kestu_str.h"
#include "machine/cpu_leaf.hpp"
#include "machine/cpu_topology.hpp"
#include "machine/cpu_vendor.hpp"
#include "mem/memory.hpp"

#include <cerrno>
#include <cstring>

#include <sched.h>

using namespace kestu;

namespace {

kestu_error_t *fail_affinity() {
    return fail(KESTU_ERR_AFFINITY, "%s", std::strerror(errno));
}

kestu_error_t *detect_vendor(kestu_cpu_t &record, const kestu_cpu_genaffinity *chosen,
                             apr_pool_t *scratch, bool &identified) {
    const Vendor &vendor = find_vendor(record.vendor_id);
    record.vendor = vendor.code;
    kestu_str_strlcpy(record.vendor_name, vendor.name, sizeof record.vendor_name);
    if (vendor.processor)
        kestu_str_strlcpy(record.name, vendor.processor, sizeof record.name);
    switch (vendor.code) {
    case KESTU_CPU_INTEL:
        return detect_topology(intel_rules, record, chosen, scratch, identified);
    case KESTU_CPU_AMD:
        return detect_topology(amd_rules, record, chosen, scratch, identified);
    default:
        return nullptr;
    }
}

// A set of the system, byte for byte as a mask of any size has it.
kestu_cpu_genaffinity mask_of(cpu_set_t &set) {
    return {.size = sizeof set, .bits = reinterpret_cast<uint8_t *>(&set)};
}

enum class Which { all, allowed, chosen };

kestu_error_t *detect(kestu_cpu_t &record, Which which, const kestu_cpu_genaffinity *chosen,
                      apr_pool_t *pool) {
    const KeptErrno kept;
    cpu_set_t saved;
    if (sched_getaffinity(0, sizeof saved, &saved) != 0)
        return fail_affinity();
    if (!kestu_cpu_check_cpuid_flag())
        return fail(KESTU_ERR_NO_CPUID);
    const VendorId id = vendor_id(running_processor()(0));
    kestu_str_strlcpy(record.vendor_id, id.text, sizeof record.vendor_id);
    apr_pool_t *scratch = nullptr;
    if (kestu_error_t *err = new_pool(&scratch, pool))
        return err;
    const kestu_cpu_genaffinity allowed = mask_of(saved);
    bool identified = false;
    kestu_error_t *err =
        detect_vendor(record, which == Which::allowed ? &allowed : chosen, scratch, identified);
    if (identified && record.id.flags.sse)
        kestu_cpu_check_os_sse(&record);
    apr_pool_destroy(scratch);
    if (sched_setaffinity(0, sizeof saved, &saved) != 0)
        err = kestu_error_compose_create(fail_affinity(), err);
    return err;
}

} // namespace

kestu_error_t *kestu_cpu_detect(kestu_cpu_t *record, apr_pool_t *pool) {
    return wrap(detect(*record, Which::all, nullptr, pool), "Can't determine CPU.");
}

kestu_error_t *kestu_cpu_detect_on(kestu_cpu_t *record, const kestu_cpu_genaffinity *processors,
                                   apr_pool_t *pool) {
    const Which which = processors ? Which::chosen : Which::allowed;
    return wrap(detect(*record, which, processors, pool), "Can't determine CPU.");
}
