// What happens when the library cannot go on.
#pragma once

#include "kestu_error.h"

namespace kestu {

inline constexpr const char *final_message = "Impossible to continue. Aborting...";

// Hands the failure `status` of APR, under the name of the action that failed, to the malfunction
// handler, which does not come back unless it is a user's. Returns an error in static storage, so
// that even then a caller never sees an error that is null.
kestu_error_t *give_up_without_memory(apr_status_t status, const char *failed_action);

} // namespace kestu
