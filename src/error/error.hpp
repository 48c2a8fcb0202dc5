// How the library makes its own errors: one short expression a site, never with a location.
#pragma once

#include "error/malfunction.hpp" // IWYU pragma: export
#include "error/report.hpp"      // IWYU pragma: export
#include "kestu_error.h"
#include "kestu_error_codes.h" // IWYU pragma: export

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

// Hands the failure `status` of APR, under the name of the action that failed, to the malfunction
// handler, which does not come back unless it is a user's.
void give_up(apr_status_t status, const char *failed_action);

// A new pool for a chain, or null when there is no memory for it.
apr_status_t new_error_pool(apr_pool_t **pool);

} // namespace kestu
