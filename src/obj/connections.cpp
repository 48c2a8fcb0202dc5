// Connecting and disconnecting.
#include "obj/connections.hpp"

#include "error/error.hpp"
#include "obj/signals.hpp"

using namespace kestu;

namespace {

constexpr uint32_t all_signals_bit = 0x80000000;

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

// The running emission does not call any more what is to go at its end.
void disconnect_later(kestu_osig_t &signal, const kestu_osigact_t &action) {
    defer(signal, action);
    if (action.destination) {
        if (const kestu_odest_t *entry = find_entry(signal, action.destination))
            neutralise(*entry, action.callback);
        return;
    }
    for (const kestu_odest_t *entry = signal.destinations; entry; entry = next_entry(entry))
        neutralise(*entry, nullptr);
}

void disconnect_now(kestu_osig_t &signal, kestu_obj_t *destination, kestu_slot_func callback) {
    if (!destination)
        return delete_all_entries(signal);
    kestu_odest_t *entry = find_entry(signal, destination);
    if (entry && callback)
        erase_slot(signal, *entry, callback);
    else if (entry)
        delete_entry(signal, entry);
}

} // namespace

namespace kestu {

void autodel(kestu_obj_t *source, uint32_t, kestu_obj_t *destination, void *, void *) {
    kestu_obj_disconnect(destination, all_signals, source, nullptr);
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
