// How the library makes its own errors: one short expression a site, never with a location.
#pragma once

#include "kestu_error.h"

namespace kestu {

// An error that carries no message: the text of its code is printed.
[[nodiscard, gnu::returns_nonnull]] kestu_error_t *fail(int code);

// An error with a message of its own; code 0 is for messages outside the table of codes.
[[nodiscard, gnu::returns_nonnull]] kestu_error_t *fail(int code, const char *format, ...)
    KESTU_PRINTF(2, 3);

// The error that APR reports as `status`.
[[nodiscard, gnu::returns_nonnull]] kestu_error_t *fail_apr(apr_status_t status);

// Puts a message above a cause and keeps its kind and code; success (null) passes through.
[[nodiscard]] kestu_error_t *wrap(kestu_error_t *cause, const char *message);

// Puts a message with code 0 above a cause, whatever the cause's code; success passes through.
[[nodiscard]] kestu_error_t *wrap_plain(kestu_error_t *cause, const char *format, ...)
    KESTU_PRINTF(2, 3);

// Prints a failure that has nobody to be returned to on standard error, and releases it.
void report(kestu_error_t *err);

// Ends the process through the malfunction handler: the failure `status` of APR, under the name of
// the action that failed. Comes back only when a user's handler does.
void give_up(apr_status_t status, const char *failed_action);

// As give_up, for when no memory is left to make errors of. Returns an error in static storage, so
// that even then a caller never sees an error that is null.
kestu_error_t *give_up_without_memory(apr_status_t status, const char *failed_action);

// A new pool for a chain, or null when there is no memory for it.
apr_status_t new_error_pool(apr_pool_t **pool);

// The text of a code of the library's own, or null.
const char *code_text(int code);

// The text registered for a code, or null when there is none.
const char *registered_text(int code);

} // namespace kestu
