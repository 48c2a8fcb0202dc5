// Recording the machine that the program runs on.
#pragma once

#include "machines/leaf_table.hpp"

#include "kestu_cpu.h"

#include <span>

namespace machines {

// What cpuid answers on each of the processors, which are numbered anew from 0; those that cannot
// be visited any more are left out, and where none is left it is the one that the thread runs on.
// The affinity of the thread is as before.
RecordedMachine record(std::span<const kestu_cpu_processor_t> processors);

} // namespace machines
