// The signals that an object has, and what waits for the end of their emission.
#pragma once

#include "obj/connection_table.hpp"

namespace kestu {

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

// Goes on, on each thread, when no action waits any more.
extern constinit thread_local uint64_t emission_round;

// Takes an action out of the queue of a signal without carrying it out.
void drop_action(const kestu_osig_t &signal, unsigned index);

// Takes a queue away with all that it holds.
void drop_actions(UT_array *&actions);

// Lets an action wait for the end of the signal's emission.
void defer(kestu_osig_t &signal, const kestu_osigact_t &action);

} // namespace kestu
