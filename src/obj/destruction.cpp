// The destruction of objects and of their families, without recursion: a child that is destroyed
// with its parent knows whose destruction goes on afterwards.
#include "kestu_obj.h"

#include "obj/children.hpp"
#include "obj/cleanups.hpp"
#include "obj/connection_table.hpp"
#include "obj/connections.hpp"
#include "obj/emission.hpp"
#include "obj/pools.hpp"

using namespace kestu;

namespace {

// The destroy signal has told most partners already. Those are left that were connected since, from
// slots and cleanups, and those that have lost their hidden slot.
void be_forgotten(Object &object) {
    while (Entry *entry = object.known_by) {
        Object *partner = entry->source;
        detach(*entry);
        if (partner != &object)
            kestu_obj_disconnect(partner, all_signals, &object, nullptr);
    }
    forget_waiting(object);
}

void begin(Object &object) {
    object.life = Life::dying;
    kestu_error_clear(kestu_obj_emit_signal(&object, KESTU_OBJ_SIGNAL_DESTROY, nullptr));
    call_cleanups(object);
    forget_names(object);
}

void cut_ties(Object &object) {
    object.children = nullptr;
    leave_family(object);
    be_forgotten(object);
    kestu_obj_delete_signals(&object);
}

void complete(Object &object) {
    cut_ties(object);
    object.life = Life::dead;
    if (object.is_doomed)
        release_pool(object);
}

// A child that is dead has been cleaned up by hand, and one that is dying looks after itself.
Object *take_first_living_child(Object &parent) {
    while (Object *child = take_first_child(parent)) {
        if (child->life == Life::alive)
            return child;
        if (child->life == Life::dead)
            release_pool(*child);
    }
    return nullptr;
}

// Children are looked for anew each time: what is called on the way may add some and take some
// away.
void destroy_family(Object &top) {
    begin(top);
    for (Object *at = &top; at;) {
        if (Object *child = take_first_living_child(*at)) {
            child->is_doomed = true;
            child->above = at;
            begin(*child);
            at = child;
        } else {
            Object *const above = at->above;
            complete(*at);
            at = above;
        }
    }
}

} // namespace

void kestu_obj_destroy(kestu_obj_t *obj) {
    const Destroying destroying;
    Object &object = *object_of(obj);
    if (object.life == Life::alive) {
        object.is_doomed = true;
        destroy_family(object);
    } else if (object.life == Life::dead) {
        release_pool(object);
    }
    if (Destroying::is_outermost())
        release_waiting_pools();
}

void kestu_obj_destroy_callback(uint32_t, void *obj, void *) {
    kestu_obj_destroy(static_cast<kestu_obj_t *>(obj));
}

// What a dead object was tied to since is cut again.
apr_status_t kestu_obj_cleanup(void *obj) {
    const Destroying destroying;
    Object &object = *object_of(static_cast<kestu_obj_t *>(obj));
    if (object.life == Life::alive)
        destroy_family(object);
    else if (object.life == Life::dead)
        cut_ties(object);
    return APR_SUCCESS;
}
