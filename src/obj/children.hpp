// What the destruction of an object asks of its family.
#pragma once

#include "obj/object.hpp"

namespace kestu {

// Forgets the names of the children. A dying parent does so before they go.
void forget_names(Object &parent);

// Takes the first child out of its parent's tree and care; null when there is none.
Object *take_first_child(Object &parent);

// Takes `object` out of the trees of all its parents, and its wards out of its care.
void leave_family(Object &object);

} // namespace kestu
