// Links: what stands behind the slots that kestu_obj_link connects.
#pragma once

#include "kestu_link.h"

struct kestu_link_t {
    kestu_obj_t *source;
    kestu_obj_t *destination;
    uint32_t code;
    uint32_t flags;
    kestu_link_func fn;
    void *user;
    void (*end)(kestu_link_t *link);
    unsigned holders; // the handle, and the slot or what waits to become one
    bool is_alive;
    bool is_blocked;
};

namespace kestu {

// The callback of the slots of links, whose user pointer is the link.
void run_link(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
              void *argument);

// Stands for the callback of a slot that is gone, and is never connected.
void gone_link(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination, void *user,
               void *argument);

// An emission that is under way.
struct Running {
    Running *outer;
    kestu_error_t **failures; // where slots put theirs, null when nobody wants them

    static constinit thread_local Running *innermost;
};

inline kestu_link_t *link_of(kestu_slot_func callback, void *user) {
    return callback == run_link ? static_cast<kestu_link_t *>(user) : nullptr;
}

// A slot, or an action that connects one, goes.
void let_go(kestu_slot_func callback, void *user);

// In which of three rounds the slot is called.
inline unsigned round_of(const kestu_oslot_t &slot) {
    const kestu_link_t *link = link_of(slot.callback, slot.user);
    if (!link)
        return 1;
    return link->flags & KESTU_LINK_FIRST ? 0 : link->flags & KESTU_LINK_LAST ? 2 : 1;
}

} // namespace kestu
