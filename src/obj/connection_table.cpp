// The connections of a signal.
#include "obj/connection_table.hpp"

#include "kestu_mem.h"
#include "obj/links.hpp"

using namespace kestu;

namespace {

void attach(Entry &entry, Object *destination) {
    entry.known_to = destination;
    entry.prev_known = nullptr;
    entry.next_known = destination->known_by;
    if (entry.next_known)
        entry.next_known->prev_known = &entry;
    destination->known_by = &entry;
}

kestu_error_t *add_entry(kestu_osig_t &signal, kestu_obj_t *source, kestu_obj_t *destination,
                         kestu_odest_t **out) {
    Entry *entry = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(sizeof *entry, &entry))
        return err;
    entry->destination = destination;
    entry->source = object_of(source);
    attach(*entry, object_of(destination));
    utarray_init(&entry->slot_array, &oslot_icd);
    entry->slots = &entry->slot_array;
    entry->calls = nullptr;
    *out = entry;
    HASH_ADD_PTR(signal.destinations, destination, *out);
    return nullptr;
}

// Slots of the signal come or go.
void drop_calls(const kestu_osig_t &signal) {
    if (Entry *first = own_entry(signal.destinations)) {
        kestu_mem_free(first->calls);
        first->calls = nullptr;
    }
}

void erase(const kestu_odest_t &entry, kestu_oslot_t &slot) {
    let_go(slot.callback, slot.user);
    const auto index = static_cast<unsigned>(&slot - slots_of(entry).begin());
    utarray_erase(entry.slots, index, 1);
}

void silence(kestu_oslot_t &slot) {
    let_go(slot.callback, slot.user);
    slot.callback = nullptr;
}

void release(Entry &entry) {
    detach(entry);
    utarray_done(&entry.slot_array);
}

} // namespace

namespace kestu {

kestu_odest_t *find_entry(const kestu_osig_t &signal, const kestu_obj_t *destination) {
    kestu_odest_t *entry = nullptr;
    HASH_FIND_PTR(signal.destinations, &destination, entry);
    return entry;
}

kestu_error_t *set_slot(kestu_osig_t &signal, kestu_obj_t *source, kestu_obj_t *destination,
                        const kestu_oslot_t &slot) {
    kestu_odest_t *entry = find_entry(signal, destination);
    if (!entry)
        if (kestu_error_t *err = add_entry(signal, source, destination, &entry))
            return err;
    for (kestu_oslot_t &existing : slots_of(*entry))
        if (existing.callback == slot.callback && slot.callback != run_link) {
            existing.user = slot.user;
            return nullptr;
        }
    drop_calls(signal);
    if (!entry->slots)
        utarray_new(entry->slots, &oslot_icd);
    utarray_push_back(entry->slots, &slot);
    return nullptr;
}

void erase_slot(kestu_osig_t &signal, kestu_odest_t &entry, kestu_slot_func callback) {
    drop_calls(signal);
    for (kestu_oslot_t &slot : slots_of(entry))
        if (!slot.callback || slot.callback == callback)
            return erase(entry, slot);
}

size_t end_slots(kestu_osig_t &signal, kestu_odest_t &entry, SlotTest *is_meant,
                 const void *datum) {
    size_t ended = 0;
    for (unsigned i = 0; i < slots_of(entry).count;) {
        kestu_oslot_t &slot = slots_of(entry).first[i];
        const bool ends = slot.callback && is_meant(slot, datum);
        ended += ends;
        if (ends && !(signal.flags & KESTU_OSIG_BUSY)) {
            drop_calls(signal);
            erase(entry, slot);
            continue;
        }
        if (ends)
            silence(slot);
        ++i;
    }
    return ended;
}

void neutralise(const kestu_odest_t &entry, kestu_slot_func callback) {
    for (kestu_oslot_t &slot : slots_of(entry)) {
        if (callback && slot.callback != callback)
            continue;
        silence(slot);
        if (callback)
            return;
    }
}

void delete_entry(kestu_osig_t &signal, kestu_odest_t *entry) {
    drop_calls(signal);
    for (const kestu_oslot_t &slot : slots_of(*entry))
        let_go(slot.callback, slot.user);
    HASH_DEL(signal.destinations, entry);
    if (Entry *own = own_entry(entry))
        release(*own);
    else if (entry->slots)
        utarray_free(entry->slots);
    kestu_mem_free(entry);
}

void delete_all_entries(kestu_osig_t &signal) {
    while (signal.destinations)
        delete_entry(signal, signal.destinations);
}

void detach(Entry &entry) {
    if (!entry.known_to)
        return;
    (entry.prev_known ? entry.prev_known->next_known : entry.known_to->known_by) = entry.next_known;
    if (entry.next_known)
        entry.next_known->prev_known = entry.prev_known;
    entry.known_to = nullptr;
}

} // namespace kestu

UT_icd oslot_icd = {sizeof(kestu_oslot_t), nullptr, nullptr, nullptr};
