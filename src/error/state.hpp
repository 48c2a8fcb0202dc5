// The state of the error subsystem, which lives from kestu_error_initialize to
// kestu_error_terminate.
#pragma once

#include "kestu_error.h"

#include <apr_thread_mutex.h>

namespace kestu {

// The text of code KESTU_ERROR_FIRST_REGISTERED + i stands at place i, null when it was taken back.
struct RegisteredTexts {
    const char **begin;
    int count;
    int capacity;
};

struct ErrorState {
    apr_pool_t *pool;          // parent of every chain's pool; holds the registered texts
    apr_thread_mutex_t *mutex; // guards the registered texts and the handler while they change
    RegisteredTexts texts;
    kestu_error_malfunction_func malfunction_handler; // null: the default one
};

extern ErrorState error_state;

} // namespace kestu
