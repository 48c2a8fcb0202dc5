/*
 * Links: connections of signals that can be held, blocked, ordered and end by themselves, whose
 * slots may fail, and emissions that tell what failed.
 *
 *     kestu_link_t *link = NULL;
 *     err = kestu_obj_link(button, clicked, window, save, file, KESTU_LINK_ONCE, &link);
 *     err = kestu_obj_emit_collect(button, clicked, NULL);    // what the slots failed with
 *     printf("%d\n", kestu_link_is_alive(link));              // 0: it has ended by itself
 *     kestu_link_release(&link);
 *
 * A link is a slot like all others (kestu_objsig.h): it ends with either object and when it is
 * disconnected by other means, and while its signal is emitted it waits to come and to go. Each
 * link is a connection of its own, however alike two of them are. A handle outlives all that and
 * then does nothing. A link belongs to the thread of its objects.
 */
#ifndef KESTU_LINK_H
#define KESTU_LINK_H

#include "kestu_objsig.h"

KESTU_BEGIN_DECLS

/* A handle of a link. Its record is the library's own. */
typedef struct kestu_link_t kestu_link_t;

/*
 * A slot that may fail: called with the object `source` that emits the signal `code`, the object
 * `destination` and the `user` pointer of the link, and the `argument` of the emission.
 */
typedef kestu_error_t *(*kestu_link_func)(kestu_obj_t *source, uint32_t code,
                                          kestu_obj_t *destination, void *user, void *argument);

/* Flags of a link. */
enum {
    KESTU_LINK_ONCE = 1,  /* ends as its slot is called for the first time */
    KESTU_LINK_FIRST = 2, /* its slot comes before those without this flag */
    KESTU_LINK_LAST = 4,  /* its slot comes behind those without this flag */
};

/*
 * Links the signal `code` of `source` to `fn`, which is called with `destination` and `user`, and
 * stores a handle through `link`, unless that is null. `flags` are those above. Errors are those of
 * kestu_obj_connect, with null stored.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_link(kestu_obj_t *source, uint32_t code,
                                                       kestu_obj_t *destination, kestu_link_func fn,
                                                       void *user, uint32_t flags,
                                                       kestu_link_t **link);

/* Gives the handle at `link` back and sets it to null. The link stays. Null does nothing. */
KESTU_API void kestu_link_release(kestu_link_t **link);

/* Ends `link`. Its slot is not called any more, not even by an emission that is under way. */
KESTU_API void kestu_link_disconnect(kestu_link_t *link);

/* Lets emissions pass over the slot of `link` until kestu_link_unblock. */
KESTU_API void kestu_link_block(kestu_link_t *link);

/* Lets emissions call the slot of `link` again. */
KESTU_API void kestu_link_unblock(kestu_link_t *link);

/* Whether `link` has not ended: 1 or 0. */
KESTU_API int kestu_link_is_alive(const kestu_link_t *link);

/*
 * Ends the connections of the signal `code` of `source`, or of all its signals when bit 31 of
 * `code` is set, that were made with this `user`: links and others.
 */
KESTU_API void kestu_obj_disconnect_user(kestu_obj_t *source, uint32_t code, const void *user);

/*
 * Emits the signal `code` of `obj` with `argument` as kestu_obj_emit_signal does, and returns what
 * the slots of links failed with: all of it as one chain, the latest outermost.
 * kestu_obj_emit_signal releases such failures. Errors of its own are those of
 * kestu_obj_emit_signal.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_emit_collect(kestu_obj_t *obj, uint32_t code,
                                                               void *argument);

/*
 * As kestu_obj_emit_collect, but returns the first failure of a slot, behind which no slot is
 * called.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_emit_until_error(kestu_obj_t *obj, uint32_t code,
                                                                   void *argument);

/*
 * Stores the code of the signal type called `name` through `code`, which is registered if it is not
 * there: unlike kestu_objsig_register it leaves nothing locked. Errors are those of
 * kestu_objsig_register but for KESTU_ERR_SIGNAL_TYPE_EXISTS (120103).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_objsig_register_once(uint32_t *code,
                                                                   const char *name);

KESTU_END_DECLS

#endif
