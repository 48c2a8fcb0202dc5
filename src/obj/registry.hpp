// What is registered with the object engine, from kestu_obj_engine_init to
// kestu_obj_engine_terminate: object types and signal types, each kind under a lock of its own and
// with codes that count on over restarts.
#pragma once

#include "error/error.hpp"
#include "kestu_cdl.h"
#include "kestu_dl.h"

#include <apr_thread_mutex.h>

namespace kestu {

struct Registry {
    apr_pool_t *pool;         // holds the records
    apr_thread_mutex_t *lock; // guards them while they change
    uint32_t next_code;
    bool must_unlock; // a lock that cannot be given back is a malfunction even after a failure
};

struct Engine {
    apr_pool_t *pool;
    Registry types;
    Registry signal_types;
    kestu_dl_t *type_list;         // in order of registration
    kestu_cdl_t *signal_type_list; // with the records that were given back
};

extern Engine engine;

// Locks a registry; an error when that fails or the engine is not started.
[[nodiscard]] kestu_error_t *lock(const Registry &registry);

// Unlocks it after a success. A failure to unlock is a malfunction of `action` and no error.
void unlock(const Registry &registry, const char *action);

// Unlocks it and returns `err`, with a failure to unlock beside it.
[[nodiscard]] kestu_error_t *unlock_after(const Registry &registry, kestu_error_t *err);

// Registers under the lock: `refuse` returns an error when a name is taken, `add` makes the record
// for a new code.
//
// Kept: a refusal leaves the registry locked. Relied on by: programs that take a name that is
// registered twice for their end.
template <typename Refuse, typename Add>
kestu_error_t *enrol(Registry &registry, const char *action, Refuse refuse, Add add) {
    if (kestu_error_t *err = lock(registry))
        return wrap(err, action);
    if (kestu_error_t *err = refuse())
        return err;
    if (kestu_error_t *err = add(registry.next_code))
        return wrap(unlock_after(registry, err), action);
    ++registry.next_code;
    unlock(registry, action);
    return nullptr;
}

} // namespace kestu
