/*
 * Signals of objects: connections from an object that emits to callbacks on behalf of others.
 *
 *     uint32_t clicked;
 *     err = kestu_obj_engine_init(pool);           // once, before any signal type
 *     err = kestu_objsig_register(&clicked, "clicked");
 *     err = kestu_obj_add_signal(button, clicked);
 *     err = kestu_obj_connect(button, clicked, window, on_click, NULL);
 *     err = kestu_obj_emit_signal(button, clicked, "left");
 *
 * The last line calls on_click(button, clicked, window, NULL, "left").
 *
 * A connection ends when either object is destroyed: both are connected by hidden slots on their
 * destroy signals. While a signal is emitted, connecting, disconnecting and removing it wait until
 * the emission has ended, but for slots that are disconnected: those are not called any more.
 * Objects may be destroyed from slots, the emitting one included. Signal types may be registered on
 * many threads at once; for the rest an object and all that it is connected with belong to one
 * thread at a time.
 *
 * Tables and arrays are those of uthash (kestu_uthash.h); when they find no memory left, the
 * process exits with status -1.
 */
#ifndef KESTU_OBJSIG_H
#define KESTU_OBJSIG_H

#include "kestu_obj.h"

#include <stdio.h>

KESTU_BEGIN_DECLS

/*
 * A slot: called with the object `source` that emits the signal `code`, the object `destination`
 * that it was connected for, the `user` pointer of the connection and the `argument` of the
 * emission. It may connect, disconnect, emit and destroy at will.
 */
typedef void (*kestu_slot_func)(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                                void *user, void *argument);

/* The flag of a signal that is being emitted; the other bits are the user's. */
enum { KESTU_OSIG_BUSY = 1 /* the signal is being emitted, or is dumb */ };

/* A connection: what is called and with which pointer. A null callback is never called. */
typedef struct kestu_oslot_t {
    void *user;               /* the user's, handed to the callback */
    kestu_slot_func callback; /* what is called; null: nothing */
} kestu_oslot_t;

/* All connections of one signal for one object. */
typedef struct kestu_odest_t {
    kestu_obj_t *destination;  /* the key */
    kestu_ut_array_t *slots;   /* of kestu_oslot_t, in order of connection */
    kestu_ut_hash_handle_t hh; /* entries follow in the order in which they were made */
} kestu_odest_t;

/*
 * A signal of an object. Tables and arrays are there to be read: an emission does not see what is
 * changed in them by other means than the functions below.
 */
typedef struct kestu_osig_t {
    int32_t code;                /* of its type */
    uint16_t flags;              /* KESTU_OSIG_BUSY, and the user's */
    kestu_odest_t *destinations; /* a hash table, null when empty */
    kestu_ut_array_t *actions;   /* of kestu_osigact_t, null when nothing waits */
} kestu_osig_t;

/* What an action is about. */
enum {
    KESTU_OSIGACT_CONNECT = 1,    /* a connection to make */
    KESTU_OSIGACT_DISCONNECT = 2, /* connections to end */
    KESTU_OSIGACT_REMOVE = 3,     /* a signal to take away */
};

/* Something that waits for the end of an emission. */
typedef struct kestu_osigact_t {
    uint32_t kind;            /* KESTU_OSIGACT_CONNECT and so on */
    uint32_t code;            /* of the signal */
    kestu_obj_t *source;      /* the object whose signal it is */
    kestu_obj_t *destination; /* as in the call that waits */
    void *user;               /* as in the call that waits */
    kestu_slot_func callback; /* as in the call that waits */
} kestu_osigact_t;

/*
 * The descriptor of arrays of kestu_osig_t, for code that handles them with the macros of
 * utarray.h.
 */
KESTU_API extern kestu_ut_icd_t osig_icd;

/* The descriptor of arrays of kestu_oslot_t. */
KESTU_API extern kestu_ut_icd_t oslot_icd;

/* The descriptor of arrays of kestu_osigact_t. */
KESTU_API extern kestu_ut_icd_t osigact_icd;

/*
 * Releases what the signal `osig`, a kestu_osig_t, holds: the destructor of osig_icd. The entries
 * of a signal that a program has built itself are given to kestu_mem_free, their slots to
 * utarray_free.
 */
KESTU_API void osig_dtor(void *osig);

/*
 * Registers a signal type under a copy of `name`, or without a name when that is null, and stores
 * its code through `code`, from 100 up. Errors under "Cannot register signal.": APR's,
 * KESTU_ERR_NOT_INITIALIZED (120001) while the engine is not started, those of allocation; and
 * KESTU_ERR_SIGNAL_TYPE_EXISTS (120103) "Object signal type [%s] already exists.". After this last
 * error the registration of signal types stays locked, as callers take it for a fault of the
 * program that ends it.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_objsig_register(uint32_t *code, const char *name);

/*
 * Gives a signal type back, so that its record is used again; a `code` that is not registered
 * changes nothing. Errors under "Cannot deregister signal." are APR's, and
 * KESTU_ERR_NOT_INITIALIZED (120001) while the engine is not started.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_objsig_deregister(uint32_t code);

/* The code of the signal type called `name`, or 0; `name` may be null. */
KESTU_API uint32_t kestu_objsig_query_type(const char *name);

/*
 * Gives `obj` a signal with that `code`. Error: KESTU_ERR_SIGNAL_EXISTS (120105) "A signal with
 * code %d already exists." under "Cannot add signal to object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_add_signal(kestu_obj_t *obj, uint32_t code);

/* Takes the signal with that `code` from `obj`, with all its connections; when absent does nothing.
 */
KESTU_API void kestu_obj_remove_signal(kestu_obj_t *obj, uint32_t code);

/* Takes all signals from `obj`, at once, whether they are being emitted or not. */
KESTU_API void kestu_obj_delete_signals(kestu_obj_t *obj);

/*
 * Sets the low 16 bits of `flags` in the signal `code` of `obj`; none is ever cleared. With
 * KESTU_OSIG_BUSY the signal is dumb: emitting does nothing and connections wait. Error:
 * KESTU_ERR_NO_SIGNAL (120104) "Cannot find signal with code %d." under "Cannot set signal flags.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_set_signal_flags(kestu_obj_t *obj, uint32_t code,
                                                                   uint32_t flags);

/*
 * Connects the signal `code` of `source`: when it is emitted, `callback` is called with
 * `destination` and `user`. One callback is connected once for a destination: a second time only
 * replaces its `user`. Errors, under "Cannot connect objects by signal.": KESTU_ERR_NO_SIGNAL
 * (120104) "Cannot find signal with code %d.", and those of allocation.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_connect(kestu_obj_t *source, uint32_t code,
                                                          kestu_obj_t *destination,
                                                          kestu_slot_func callback, void *user);

/*
 * Ends connections of the signal `code` of `source`, or of all its signals when bit 31 of `code` is
 * set: those of `destination`, or all when that is null; of these only the one with `callback`,
 * unless that is null or no destination is given.
 */
KESTU_API void kestu_obj_disconnect(kestu_obj_t *source, uint32_t code, kestu_obj_t *destination,
                                    kestu_slot_func callback);

/*
 * Emits the signal `code` of `obj`: calls its slots with `argument`, destination by destination in
 * the order in which these were first connected. A signal that is being emitted already is not
 * emitted. Error: KESTU_ERR_NO_SIGNAL (120104) "Cannot find signal with code %d." under "Cannot
 * emit signal.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_emit_signal(kestu_obj_t *obj, uint32_t code,
                                                              void *argument);

/*
 * Writes the signals of `obj`, their destinations and slots to `stream`, for people. A destination
 * that has died since the emission of its signal began is printed without its name.
 */
KESTU_API void kestu_obj_print_signals(kestu_obj_t *obj, FILE *stream);

KESTU_END_DECLS

#endif
