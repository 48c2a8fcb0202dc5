// The state of the error subsystem, which lives from kestu_error_initialize to
// kestu_error_terminate.
#pragma once

#include "kestu_error.h"

#include <apr_tables.h>
#include <apr_thread_mutex.h>

namespace kestu {

struct ErrorSystem {
    apr_pool_t *pool;          // parent of every chain's pool; holds the registered texts
    apr_thread_mutex_t *mutex; // guards the registered texts and the handler while they change
    apr_array_header_t *texts; // of const char *: slot i is the text of code 125000 + i, or null
    kestu_error_malfunction_func malfunction_handler;
};

extern ErrorSystem error_system;

} // namespace kestu
