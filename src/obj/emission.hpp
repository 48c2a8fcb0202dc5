// What the destruction of an object asks of the emissions that are under way.
#pragma once

#include "obj/object.hpp"

namespace kestu {

// What waits for the end of an emission must not hit an object that comes to lie at the address of
// `object`, which is being destroyed: connections to it are dropped, and disconnections are kept
// for the signal that is being emitted alone.
void forget_waiting(const Object &object);

} // namespace kestu
