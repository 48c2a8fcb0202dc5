// Start and stop of the library.
#include "kestu_error.h"
#include "kestu_lib.h"
#include "kestu_mach.h"

#include <apr_general.h>

constinit int KestuInitialized = 0;
constinit apr_pool_t *kestu_pool = nullptr;

// The count is raised before anything is tried and stays raised on failure: a caller that goes on
// after a failed start is not given a second one.
int kestu_initialize(void) {
    if (KestuInitialized++ != 0)
        return KESTU_INIT_OK;
    if (apr_initialize() != APR_SUCCESS)
        return KESTU_INIT_APR_FAILED;
    if (apr_pool_create_ex(&kestu_pool, nullptr, nullptr, nullptr) != APR_SUCCESS)
        return KESTU_INIT_POOL_FAILED;
    if (kestu_error_initialize(kestu_pool) != 0)
        return KESTU_INIT_ERROR_FAILED;
    kestu_time_init();
    return KESTU_INIT_OK;
}

void kestu_terminate(void) {
    if (--KestuInitialized != 0)
        return;
    kestu_error_terminate();
    apr_pool_destroy(kestu_pool);
    apr_terminate();
}
