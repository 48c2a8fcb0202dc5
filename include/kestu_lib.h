/*
 * Start, stop and version of the library.
 *
 *     if (kestu_initialize() != KESTU_INIT_OK)
 *         return EXIT_FAILURE;
 *     ...
 *     kestu_terminate();
 *
 * The pair is counted, so that independent users in one process may each call it. Both are called
 * from one thread while no other thread uses the library; the version functions may be called at
 * any time. Pools that users make as children of `kestu_pool` die with the last kestu_terminate.
 */
#ifndef KESTU_LIB_H
#define KESTU_LIB_H

#include "kestu_defs.h"
#include "kestu_version.h"

#include <apr_pools.h>

KESTU_BEGIN_DECLS

/* What kestu_initialize returns. Every value but the first is to be treated as fatal. */
enum {
    KESTU_INIT_OK = 0,           /* the library is ready */
    KESTU_INIT_APR_FAILED = 1,   /* APR could not be initialised */
    KESTU_INIT_POOL_FAILED = 2,  /* the root pool could not be created */
    KESTU_INIT_ERROR_FAILED = 3, /* the error subsystem could not be started */
};

/* The number of kestu_initialize calls that kestu_terminate has not matched yet. */
KESTU_API extern int KestuInitialized;

/* The library's root pool, valid between the first kestu_initialize and the last kestu_terminate.
 */
KESTU_API extern apr_pool_t *kestu_pool;

/*
 * Starts the library on the first call and only counts on further ones. Returns KESTU_INIT_OK or
 * one of the values behind it. The call is counted even when it fails, so a second call after a
 * failure returns KESTU_INIT_OK without trying again.
 */
KESTU_API int kestu_initialize(void);

/*
 * Takes one call of kestu_initialize back, a failed one too; the last one releases every error that
 * is still alive, the root pool with all its children, and APR.
 */
KESTU_API void kestu_terminate(void);

/*
 * The first number of the version of the library that is loaded. kestu_version.h has that of the
 * headers.
 */
KESTU_API int kestu_version_major(void);

/* The second number of the version of the library that is loaded. */
KESTU_API int kestu_version_minor(void);

/* The third number of the version of the library that is loaded. */
KESTU_API int kestu_version_patch(void);

/* The version of the library that is loaded, as a text like "1.0.0" in static storage. */
KESTU_API const char *kestu_version_string(void);

KESTU_END_DECLS

#endif
