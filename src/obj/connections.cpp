// Connecting and disconnecting.
#include "obj/signals.hpp"

#include "kestu_mem.h"

using namespace kestu;

namespace {

constexpr uint32_t all_signals = 0xFFFFFFFF;
constexpr uint32_t all_signals_bit = 0x80000000;

kestu_odest_t *find_entry(const kestu_osig_t &signal, const kestu_obj_t *destination) {
    kestu_odest_t *entry = nullptr;
    HASH_FIND_PTR(signal.destinations, &destination, entry);
    return entry;
}

Elements<kestu_oslot_t> slots_of(const kestu_odest_t &entry) {
    return Elements<kestu_oslot_t>(entry.slots);
}

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

kestu_error_t *set_slot(kestu_osig_t &signal, kestu_obj_t *source, kestu_obj_t *destination,
                        const kestu_oslot_t &slot) {
    kestu_odest_t *entry = find_entry(signal, destination);
    if (!entry)
        if (kestu_error_t *err = add_entry(signal, source, destination, &entry))
            return err;
    for (kestu_oslot_t &existing : slots_of(*entry))
        if (existing.callback == slot.callback) {
            existing.user = slot.user;
            return nullptr;
        }
    drop_calls(signal);
    utarray_push_back(entry->slots, &slot);
    return nullptr;
}

// Connects the destroy signals of both ends, so that neither outlives the other in a table.
kestu_error_t *tie_lives(kestu_obj_t *source, kestu_obj_t *destination) {
    constexpr uint32_t destroy = KESTU_OBJ_SIGNAL_DESTROY;
    kestu_error_t *err = kestu_obj_connect(destination, destroy, source, autodel, nullptr);
    return err ? err : kestu_obj_connect(source, destroy, destination, autodel, nullptr);
}

kestu_error_t *connect(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                       const kestu_oslot_t &slot) {
    kestu_osig_t *signal = find_signal(source, code);
    if (!signal)
        return no_such_signal(code);
    if (is_busy(*signal)) {
        defer(*signal,
              {KESTU_OSIGACT_CONNECT, code, source, destination, slot.user, slot.callback});
        return nullptr;
    }
    if (kestu_error_t *err = set_slot(*signal, source, destination, slot))
        return err;
    const bool tying = slot.callback == autodel && code == KESTU_OBJ_SIGNAL_DESTROY;
    return source == destination || tying ? nullptr : tie_lives(source, destination);
}

// What a busy signal is to lose later is not called any more from now on.
void neutralise(kestu_odest_t &entry, kestu_slot_func callback) {
    for (kestu_oslot_t &slot : slots_of(entry)) {
        if (callback && slot.callback != callback)
            continue;
        slot.callback = nullptr;
        if (callback)
            return;
    }
}

// A slot that was neutralised stands for the one that was meant when it comes first.
void erase_slot(kestu_odest_t &entry, kestu_slot_func callback) {
    for (kestu_oslot_t &slot : slots_of(entry))
        if (!slot.callback || slot.callback == callback) {
            const auto index = static_cast<unsigned>(&slot - slots_of(entry).begin());
            utarray_erase(entry.slots, index, 1);
            return;
        }
}

void disconnect_later(kestu_osig_t &signal, const kestu_osigact_t &action) {
    defer(signal, action);
    if (action.destination) {
        if (kestu_odest_t *entry = find_entry(signal, action.destination))
            neutralise(*entry, action.callback);
        return;
    }
    for (kestu_odest_t *entry = signal.destinations; entry;
         entry = static_cast<kestu_odest_t *>(entry->hh.next))
        neutralise(*entry, nullptr);
}

void disconnect_now(kestu_osig_t &signal, kestu_obj_t *destination, kestu_slot_func callback) {
    if (!destination) {
        while (signal.destinations)
            delete_entry(signal, signal.destinations);
        return;
    }
    kestu_odest_t *entry = find_entry(signal, destination);
    drop_calls(signal);
    if (entry && callback)
        erase_slot(*entry, callback);
    else if (entry)
        delete_entry(signal, entry);
}

} // namespace

namespace kestu {

void detach(Entry &entry) {
    if (!entry.known_to)
        return;
    (entry.prev_known ? entry.prev_known->next_known : entry.known_to->known_by) = entry.next_known;
    if (entry.next_known)
        entry.next_known->prev_known = entry.prev_known;
    entry.known_to = nullptr;
}

void drop_calls(const kestu_osig_t &signal) {
    if (Entry *first = first_entry(signal)) {
        kestu_mem_free(first->calls);
        first->calls = nullptr;
    }
}

void delete_entry(kestu_osig_t &signal, kestu_odest_t *entry) {
    drop_calls(signal);
    HASH_DEL(signal.destinations, entry);
    detach(*static_cast<Entry *>(entry));
    utarray_done(entry->slots);
    kestu_mem_free(entry);
}

void autodel(kestu_obj_t *source, uint32_t, kestu_obj_t *destination, void *, void *) {
    kestu_obj_disconnect(destination, all_signals, source, nullptr);
}

// The destroy signal has told most partners already. Those are left that were connected since, from
// slots and cleanups, and those that have lost their hidden slot.
void be_forgotten(Object &object) {
    drop_waiting_connections(&object);
    while (Entry *entry = object.known_by) {
        Object *partner = entry->source;
        detach(*entry);
        if (partner != &object)
            kestu_obj_disconnect(partner, all_signals, &object, nullptr);
    }
}

} // namespace kestu

kestu_error_t *kestu_obj_connect(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                                 kestu_slot_func callback, void *user) {
    return wrap(connect(source, code, destination, {user, callback}),
                "Cannot connect objects by signal.");
}

void kestu_obj_disconnect(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                          kestu_slot_func callback) {
    for (kestu_osig_t &signal : signals_of(source)) {
        if (static_cast<uint32_t>(signal.code) != code && !(code & all_signals_bit))
            continue;
        if (is_busy(signal))
            disconnect_later(
                signal, {KESTU_OSIGACT_DISCONNECT, code, source, destination, nullptr, callback});
        else
            disconnect_now(signal, destination, callback);
    }
}
