// What the rules of all vendors share.
#pragma once

#include "kestu_cpu.h"

#include "machine/cpu_leaf.hpp"

namespace kestu {

// The fields of leaf 1 that all vendors have.
void decode_signature(const Leaf &leaf1, kestu_cpu_id_t &id);

// An identifier whose package has one logical processor: all of it tells the package.
inline constexpr kestu_cpu_split_t whole_package = {
    .thread_mask = 0,
    .thread_width = 0,
    .core_mask = 0,
    .core_width = 0,
    .core_and_thread_width = 0,
    .package_mask = 0xFFFFFFFF,
};

} // namespace kestu
