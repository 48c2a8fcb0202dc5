// The state of the object engine, which lives from kestu_obj_engine_init to
// kestu_obj_engine_terminate.
#pragma once

#include "error/error.hpp"
#include "kestu_cdl.h"
#include "kestu_dl.h"

#include <apr_thread_mutex.h>

namespace kestu {

struct Engine {
    apr_pool_t *pool;                     // holds all that is registered
    apr_pool_t *signal_type_pool;         // a part of it, as each lock guards a pool
    apr_thread_mutex_t *type_lock;        // guards `types` while it grows
    apr_thread_mutex_t *signal_type_lock; // guards `signal_types` while it changes
    kestu_dl_t *types;                    // of Type, in order of registration
    kestu_cdl_t *signal_types;            // of SignalType
    uint32_t next_type_code;              // counts on over restarts, as does the next one
    uint32_t next_signal_code;
};

extern Engine engine;

// Locks one of the engine's mutexes; an error when that fails or the engine is not started.
[[nodiscard]] kestu_error_t *lock(apr_thread_mutex_t *mutex);

// Unlocks it and returns `err`; a failure to unlock is appended to it.
[[nodiscard]] kestu_error_t *unlock_after(apr_thread_mutex_t *mutex, kestu_error_t *err);

// Unlocks it after a success. A failure to unlock is a malfunction of `action` and no error.
void unlock(apr_thread_mutex_t *mutex, const char *action);

} // namespace kestu
