// The slot that ties lives together.
#pragma once

#include "kestu_obj.h"

namespace kestu {

// Stands for every signal of an object.
constexpr uint32_t all_signals = 0xFFFFFFFF;

// The hidden slot that makes `destination` forget `source`, which is being destroyed.
void autodel(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
             void *argument);

} // namespace kestu
