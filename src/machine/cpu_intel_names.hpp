// Names of Intel's processors that do not tell their own.
#pragma once

#include "kestu_cpu.h"

namespace kestu {

// By brand index, or by family and model where there is no index; null when there is no name.
const char *intel_name(const kestu_cpu_id_t &id);

} // namespace kestu
