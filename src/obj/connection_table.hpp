// The connections of a signal: a table of entries, one for each destination, with its slots.
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

// An entry of the library's own. It stands in a list of its destination too, so that no object dies
// without being forgotten, whatever has become of the hidden slots.
struct Entry : kestu_odest_t {
    UT_array slot_array; // what `slots` points to; here, so that emitting finds it beside the rest
    Object *source;
    Object *known_to; // whose list it stands in: the destination, or null once that has died
    Entry *next_known;
    Entry *prev_known;
    Calls *calls; // of the whole signal, in its first entry; null when they are to be made
};

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

inline Elements<kestu_oslot_t> slots_of(const kestu_odest_t &entry) {
    return Elements<kestu_oslot_t>(entry.slots);
}

inline kestu_odest_t *next_entry(const kestu_odest_t *entry) {
    return static_cast<kestu_odest_t *>(entry->hh.next);
}

// Null for an entry that a program has built to the public record.
inline Entry *own_entry(kestu_odest_t *entry) {
    auto *own = static_cast<Entry *>(entry);
    return own && own->slots == &own->slot_array ? own : nullptr;
}

// The entry for a destination, or null.
kestu_odest_t *find_entry(const kestu_osig_t &signal, const kestu_obj_t *destination);

// Connects: a callback that the destination has already gets a new user pointer.
[[nodiscard]] kestu_error_t *set_slot(kestu_osig_t &signal, kestu_obj_t *source,
                                      kestu_obj_t *destination, const kestu_oslot_t &slot);

// Erases the first slot that has the callback, or none any more.
void erase_slot(kestu_osig_t &signal, kestu_odest_t &entry, kestu_slot_func callback);

// Whether a slot is meant.
using SlotTest = bool(const kestu_oslot_t &slot, const void *datum);

// Erases the slots that pass the test, or lets them not be called any more while the signal is
// busy. Returns how many there were.
size_t end_slots(kestu_osig_t &signal, kestu_odest_t &entry, SlotTest *is_meant, const void *datum);

// Lets the first slot with the callback, or all slots for a null one, not be called any more.
void neutralise(const kestu_odest_t &entry, kestu_slot_func callback);

// Takes the entry out of the signal's table and releases it.
void delete_entry(kestu_osig_t &signal, kestu_odest_t *entry);

void delete_all_entries(kestu_osig_t &signal);

// Takes the entry out of the list of its destination.
void detach(Entry &entry);

} // namespace kestu
