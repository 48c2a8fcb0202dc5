// The feature flags of leaf 1 and of AMD's extended leaves.
#pragma once

#include "kestu_cpu.h"
#include "machine/cpu_leaf.hpp"

namespace kestu {

// Those that every vendor's rules read, and all of them.
enum class FlagSet { common, all };

void decode_flags(const Leaf &leaf1, FlagSet set, kestu_cpu_flags_t &flags);

// The flags of leaves 0x80000001 and 0x80000007.
void decode_amd_flags(const Leaf &ext1, kestu_cpu_amd_t &amd);
void decode_amd_power_flags(const Leaf &ext7, kestu_cpu_amd_t &amd);

} // namespace kestu
