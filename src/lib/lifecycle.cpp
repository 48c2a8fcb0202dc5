// Start and stop of the library.
#include "kestu_lib.h"

#include "base/kept_errno.hpp"
#include "kestu_error.h"
#include "kestu_mach.h"

#include <apr_general.h>

constinit int KestuInitialized = 0;
constinit apr_pool_t *kestu_pool = nullptr;

// The root pool while it exists; kestu_pool keeps its value after the end.
static constinit apr_pool_t *root_pool = nullptr;

// Kept: the count is raised before anything is tried and stays raised on failure. Relied on by:
// callers that go on after a failed start, who are not given a second one.
int kestu_initialize(void) {
    if (KestuInitialized++ != 0)
        return KESTU_INIT_OK;
    const kestu::KeptErrno kept;
    if (apr_initialize() != APR_SUCCESS)
        return KESTU_INIT_APR_FAILED;
    const apr_status_t status = apr_pool_create_ex(&kestu_pool, nullptr, nullptr, nullptr);
    root_pool = kestu_pool;
    if (status != APR_SUCCESS)
        return KESTU_INIT_POOL_FAILED;
    if (kestu_error_initialize(kestu_pool) != 0)
        return KESTU_INIT_ERROR_FAILED;
    kestu_time_init();
    return KESTU_INIT_OK;
}

// What a failed start did not make is not there to be released; APR counts its failed starts too.
void kestu_terminate(void) {
    if (--KestuInitialized != 0)
        return;
    const kestu::KeptErrno kept;
    kestu_error_terminate();
    if (root_pool)
        apr_pool_destroy(root_pool);
    root_pool = nullptr;
    apr_terminate();
}
