// The check that the process may run everywhere. It stands alone so that a program may put its own
// in its place.
#include "kestu_cpu.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"

#include <cerrno>
#include <cstring>

#include <sched.h>

using namespace kestu;

[[gnu::noinline]] kestu_error_t *
kestu_cpu_set_chk_process_affinity_consistency(kestu_cpu_genaffinity *mask, uint32_t count) {
    const KeptErrno kept;
    cpu_set_t allowed;
    CPU_ZERO(&allowed); // what cannot be read counts as empty
    sched_getaffinity(0, sizeof allowed, &allowed);
    for (uint32_t cpu = 0; cpu < count; ++cpu) {
        if (cpu >= CPU_SETSIZE || !CPU_ISSET(cpu, &allowed))
            return fail(KESTU_ERR_AFFINITY, "%s", std::strerror(errno));
        if (kestu_error_t *err = intel_cpuid_set_genaffinity_bit(mask, cpu))
            return err;
    }
    return nullptr;
}
