// Binding to one processor. It stands alone so that a program may put its own in its place.
#include "kestu_cpu.h"

#include "base/kept_errno.hpp"
#include "error/error.hpp"

#include <cerrno>
#include <cstring>

#include <sched.h>

using namespace kestu;

[[gnu::noinline]] kestu_error_t *kestu_cpu_bind_context_to_logcpu(uint32_t cpu) {
    const KeptErrno kept;
    cpu_set_t set;
    static_assert(CPU_SETSIZE == KESTU_CPU_MAX_PROCESSORS);
    CPU_ZERO(&set);
    if (cpu < CPU_SETSIZE) // the system rejects the empty set of a larger number
        CPU_SET(cpu, &set);
    if (sched_setaffinity(0, sizeof set, &set) == 0)
        return nullptr;
    return wrap(fail(KESTU_ERR_BIND, "%s", std::strerror(errno)),
                "Failed to bind context to a logical processor.");
}
