// Links: the C edge.
#include "error/error.hpp"
#include "kestu_mem.h"
#include "obj/connections.hpp"
#include "obj/links.hpp"
#include "obj/signals.hpp"

using namespace kestu;

namespace {

constexpr uint32_t all_signals_bit = 0x80000000;

bool is_of_link(const kestu_oslot_t &slot, const void *link) {
    return slot.callback == run_link && slot.user == link;
}

// The hidden slots that tie lives together have no user.
bool has_user(const kestu_oslot_t &slot, const void *user) {
    if (const kestu_link_t *link = link_of(slot.callback, slot.user))
        return link->user == user;
    return slot.callback != autodel && slot.user == user;
}

// Ends the slots of an entry that are meant; while the signal is busy they go at the end of its
// emission.
size_t end_in_entry(kestu_osig_t &signal, kestu_obj_t *source, kestu_odest_t &entry,
                    SlotTest *is_meant, const void *datum) {
    const size_t ended = end_slots(signal, entry, is_meant, datum);
    for (size_t i = 0; is_busy(signal) && i < ended; ++i)
        defer(signal, {KESTU_OSIGACT_DISCONNECT, static_cast<uint32_t>(signal.code), source,
                       entry.destination, nullptr, gone_link});
    return ended;
}

// Ends what waits to be connected. Returns how many there were.
size_t end_waiting(const kestu_osig_t &signal, SlotTest *is_meant, const void *datum) {
    size_t ended = 0;
    for (unsigned i = signal.actions ? signal.actions->i : 0; i-- > 0;) {
        const kestu_osigact_t &action = Elements<kestu_osigact_t>(signal.actions).first[i];
        if (action.kind != KESTU_OSIGACT_CONNECT ||
            !is_meant({action.user, action.callback}, datum))
            continue;
        drop_action(signal, i);
        ++ended;
    }
    return ended;
}

// Ends a link wherever it stands, also one that has come to nothing.
void end(kestu_link_t *link) {
    kestu_osig_t *signal = find_signal(link->source, link->code);
    kestu_odest_t *entry = signal ? find_entry(*signal, link->destination) : nullptr;
    size_t ended = 0;
    if (entry)
        ended = end_in_entry(*signal, link->source, *entry, is_of_link, link);
    if (signal && ended == 0)
        ended = end_waiting(*signal, is_of_link, link);
    if (ended == 0)
        let_go(run_link, link);
}

kestu_error_t *connect(kestu_link_t &link) {
    return kestu_obj_connect(link.source, link.code, link.destination, run_link, &link);
}

} // namespace

kestu_error_t *kestu_obj_link(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                              kestu_link_func fn, void *user, uint32_t flags, kestu_link_t **link) {
    kestu_link_t *made = nullptr;
    if (link)
        *link = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(sizeof *made, &made))
        return wrap(err, "Cannot connect objects by signal.");
    *made = {.source = source,
             .destination = destination,
             .code = code,
             .flags = flags,
             .fn = fn,
             .user = user,
             .end = end,
             .holders = 1U + (link != nullptr),
             .is_alive = true,
             .is_blocked = false};
    if (kestu_error_t *err = connect(*made)) {
        end(made);
        kestu_link_release(link ? &made : nullptr);
        return err;
    }
    if (link)
        *link = made;
    return nullptr;
}

void kestu_link_release(kestu_link_t **link) {
    kestu_link_t *const held = link ? *link : nullptr;
    if (!held)
        return;
    *link = nullptr;
    if (--held->holders == 0)
        kestu_mem_free(held);
}

void kestu_link_disconnect(kestu_link_t *link) {
    if (link && link->is_alive)
        end(link);
}

void kestu_link_block(kestu_link_t *link) {
    if (link)
        link->is_blocked = true;
}

void kestu_link_unblock(kestu_link_t *link) {
    if (link)
        link->is_blocked = false;
}

int kestu_link_is_alive(const kestu_link_t *link) {
    return link && link->is_alive;
}

void kestu_obj_disconnect_user(kestu_obj_t *source, uint32_t code, const void *user) {
    for (kestu_osig_t &signal : signals_of(source)) {
        if (static_cast<uint32_t>(signal.code) != code && !(code & all_signals_bit))
            continue;
        for (kestu_odest_t *entry = signal.destinations; entry; entry = next_entry(entry))
            end_in_entry(signal, source, *entry, has_user, user);
        end_waiting(signal, has_user, user);
    }
}
