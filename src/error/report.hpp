// Failures that have nobody to be returned to.
#pragma once

#include "kestu_error.h"

namespace kestu {

// Prints a chain on standard error and releases it.
void report(kestu_error_t *err);

} // namespace kestu
