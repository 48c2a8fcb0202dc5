/*
 * Log files that only grow: opened once, written line by line with or without a date.
 *
 *     kestu_log_t *log;
 *     kestu_error_t *err = kestu_log_create(&log, "daemon.log", pool);
 *     kestu_log_dtprintf(log, "%d images read\n", n);
 *     kestu_error_clear(kestu_error_handle(err, kestu_log_errhandler, log));
 *     kestu_log_terminate(log);
 *
 * Writing returns nothing and leaves errno alone: a failure is printed on standard error and
 * otherwise ignored. Each call writes its text at once to the end of the file, so that processes
 * that share a file do not tear each other's lines. A log is used by one thread at a time.
 */
#ifndef KESTU_LOG_H
#define KESTU_LOG_H

#include "kestu_error.h"

#include <apr_file_io.h>
#include <apr_pools.h>

KESTU_BEGIN_DECLS

/* A log. Its fields are to be read. */
typedef struct kestu_log_t {
    apr_pool_t *pool; /* its own */
    apr_file_t *file; /* null when it could not be opened */
    const char *name; /* of the file */
} kestu_log_t;

/*
 * Opens the file `name` for appending, makes it when there is none, and stores the new log through
 * `log`. It lives in a child pool of `parent` and goes with that. Errors stand under "Cannot create
 * log."; when the file cannot be opened, "Can't open file 'daemon.log'" stands between, and the log
 * is stored all the same, without a file: writing to it fails as it does on a closed one.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_log_create(kestu_log_t **log, const char *name,
                                                         apr_pool_t *parent);

/* Closes the file of `log`. A failure is printed on standard error. */
KESTU_API void kestu_log_terminate(kestu_log_t *log);

/*
 * Appends to `log` the text of `format` and what follows it, cut to 999 characters. No newline is
 * added; an empty text writes nothing. Failures are printed under "Cannot write to log.".
 *
 * The text is formatted by apr_vsnprintf, which knows d, i, u, o, x and X with h and l, and c, s, f
 * (below 1e79), e, g and %, all with width and precision. Others it prints as they stand, leaving
 * their argument for the next one, or takes for something else: %zu, %lld, %hhd, %Lf, %a, %p, %n
 * and the flag ' must not be used, so the compiler, which would accept them, is not asked to check
 * the format. A newline at the end of the format comes whatever the values; a text that holds a
 * zero byte ends there.
 */
KESTU_API void kestu_log_printf(kestu_log_t *log, const char *format, ...);

/*
 * As kestu_log_printf, with the local date before the text, as in "Sun Nov 16 10:03:59 2025: ",
 * even before an empty one.
 */
KESTU_API void kestu_log_dtprintf(kestu_log_t *log, const char *format, ...);

/*
 * Appends the chain `err` to `log` as one line of JSON (kestu_error_to_json) of any length. A null
 * chain appends nothing. Failures are printed as by kestu_log_printf, and so is that of memory.
 */
KESTU_API void kestu_log_json(kestu_log_t *log, kestu_error_t *err);

/*
 * A handler for kestu_error_handle whose baton is the `log`: each `line` of an error, cut to 998
 * characters, becomes a line of the log. Returns 0.
 */
KESTU_API int kestu_log_errhandler(const char *line, void *log);

KESTU_END_DECLS

#endif
