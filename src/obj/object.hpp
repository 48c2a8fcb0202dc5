// What the engine keeps of an object behind the public record.
#pragma once

#include "kestu_obj.h"

#include <atomic>

namespace kestu {

struct Object;
struct Entry;

// A node in the tree of a parent. It carries a child, or nothing any more when only its name is
// still taken.
struct Membership : kestu_tree_t {
    Object *holder; // the parent
    bool named;     // the holder's index of names leads here
    Membership *next_of_child;
    Membership *prev_of_child;
};

enum class Life : uint8_t { alive, dying, dead };

struct Object : kestu_obj_t {
    // Parents and children (children.cpp).
    kestu_tree_t root;       // what `children` points to
    Membership *last_child;  // of the tree
    Membership *memberships; // latest first; more than one when it was added several times
    Membership *parked;      // nodes taken from the tree whose names still lead to them
    Object *wards; // the objects whose `parent` is this one, whether still in its tree or not
    Object *next_ward;
    Object *prev_ward;

    // Signals (connection_table.cpp).
    UT_array signal_array; // what `signals` points to
    Entry *known_by;       // the connections of other objects that lead to this one
    size_t waiting;        // the actions that have begun to wait in a round and name this object
    uint64_t round;        // which round that is, see signals.hpp

    // Pools (pools.cpp).
    Object *host;   // the nearest object in whose pool this one's lies, at whatever depth
    Object *guests; // the objects whose host is this one, latest first
    Object *next_guest;
    Object *prev_guest;
    Object *next_waiting; // of the pools that wait for their end
    Object *prev_waiting;
    std::atomic_flag guests_locked; // threads may share a pool as a parent of others
    bool is_waiting;
    bool is_going; // the end of its pool has begun
    bool is_late;  // made in a pool whose end had begun

    // Destruction (destruction.cpp).
    Life life;
    bool is_doomed; // its pool ends with it
    Object *above;  // the dying parent whose destruction goes on after this one's
};

inline Object *object_of(kestu_obj_t *obj) {
    return static_cast<Object *>(obj);
}

} // namespace kestu
