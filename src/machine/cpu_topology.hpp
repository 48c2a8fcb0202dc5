// Visiting every logical processor.
#pragma once

#include "machine/cpu_decode.hpp"

namespace kestu {

// Fills the identification, the caches and the topology results of the record from the processors
// of `chosen`, of which those that the thread cannot be bound to are left out; null for all,
// without leaving out any. Scratch memory comes from `pool`. Sets `identified`, which comes in as
// false, once the identification is there, as it may be after a failure.
[[nodiscard]] kestu_error_t *detect_topology(const Rules &rules, kestu_cpu_t &record,
                                             const kestu_cpu_genaffinity *chosen, apr_pool_t *pool,
                                             bool &identified);

} // namespace kestu
