// What the files of signals ask of each other.
#pragma once

#include "kestu_objsig.h"
#include "obj/object.hpp"

namespace kestu {

// Where the slots of a signal stand, one after the other, so that emitting need not go through
// table and arrays. It is made by the first emission and dropped when slots come or go.
struct Calls {
    struct Call {
        kestu_obj_t *destination;
        const kestu_oslot_t *slot;
    };

    const Call *begin() const { return list; }
    const Call *end() const { return list + count; }

    size_t count;
    Call list[];
};

// A destination entry. It stands in a list of its destination too, so that no object dies without
// being forgotten, whatever has become of the hidden slots.
struct Entry : kestu_odest_t {
    UT_array slot_array; // what `slots` points to; here, so that emitting finds it beside the rest
    Object *source;
    Object *known_to; // whose list it stands in: the destination, or null once that has died
    Entry *next_known;
    Entry *prev_known;
    Calls *calls; // of the whole signal, in its first entry; null when they are to be made
};

inline const Entry *next_entry(const Entry *entry) {
    return static_cast<const Entry *>(static_cast<const kestu_odest_t *>(entry->hh.next));
}

inline Entry *first_entry(const kestu_osig_t &signal) {
    return static_cast<Entry *>(signal.destinations);
}

// Slots of the signal come or go.
void drop_calls(const kestu_osig_t &signal);

// Takes the entry out of the list of its destination.
void detach(Entry &entry);

// Takes the entry out of the signal's table and releases it.
void delete_entry(kestu_osig_t &signal, kestu_odest_t *entry);

// The elements of one of uthash's arrays, which may be null.
template <typename Element>
struct Elements {
    explicit Elements(const UT_array *array)
        : first(array ? reinterpret_cast<Element *>(array->d) : nullptr),
          count(array ? array->i : 0) {}
    Element *begin() const { return first; }
    Element *end() const { return first + count; }

    Element *first;
    unsigned count;
};

inline Elements<kestu_osig_t> signals_of(const kestu_obj_t *obj) {
    return Elements<kestu_osig_t>(obj->signals);
}

// The signal with that code, or null. It moves when a signal is added or removed.
inline kestu_osig_t *find_signal(const kestu_obj_t *obj, uint32_t code) {
    for (kestu_osig_t &signal : signals_of(obj))
        if (static_cast<uint32_t>(signal.code) == code)
            return &signal;
    return nullptr;
}

inline bool is_busy(const kestu_osig_t &signal) {
    return signal.flags & KESTU_OSIG_BUSY;
}

// The error of a signal that an object does not have.
[[nodiscard]] kestu_error_t *no_such_signal(uint32_t code);

// Lets an action wait for the end of the signal's emission.
void defer(kestu_osig_t &signal, const kestu_osigact_t &action);

// The hidden slot that makes `destination` forget `source`, which is being destroyed.
void autodel(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
             void *argument);

// Makes all that know `object`, which is being destroyed, forget it.
void be_forgotten(Object &object);

// Ends the emissions of `obj` that are under way once their slot has returned: its signals are
// going.
void abandon_emissions(const kestu_obj_t *obj);

// Takes from all emissions under way the connections to `obj` that wait.
void drop_waiting_connections(const kestu_obj_t *obj);

} // namespace kestu
