// What the destruction of an object asks of its cleanups.
#pragma once

#include "obj/object.hpp"

namespace kestu {

// Calls the cleanups that are registered with `object`.
void call_cleanups(Object &object);

} // namespace kestu
