// What the engine keeps of an object behind the public record, and what its files ask of each
// other.
#pragma once

#include "error/error.hpp"
#include "kestu_obj.h"

namespace kestu {

struct Object;
struct Entry;

// One node in the tree of a parent that carries an object.
struct Membership {
    Object *parent;
    kestu_tree_t *node;
    bool named; // the parent's index of names leads to the node
    Membership *next;
};

struct Object : kestu_obj_t {
    Membership *memberships; // latest first; more than one when it was added several times
    Object *wards; // the objects whose `parent` is this one, whether still in its tree or not
    Object *next_ward;
    Object *prev_ward;
    Entry *known_by;      // the connections of other objects that lead to this one
    kestu_tree_t *parked; // nodes taken from the tree whose names still lead to them
    bool dying;           // its destruction has begun
};

inline Object *object_of(kestu_obj_t *obj) {
    return static_cast<Object *>(obj);
}

// Destroys the children of `parent` in their order and releases tree and index.
void destroy_children(Object &parent);

// Takes `object` out of the trees of all its parents, and its wards out of its care.
void leave_family(Object &object);

// Calls the cleanups that are registered with `object`.
void call_cleanups(Object &object);

} // namespace kestu
