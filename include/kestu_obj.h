/*
 * Objects: a type, a name, a datum, a pool of their own, named children, cleanups and signals.
 *
 *     kestu_obj_t *window, *button;
 *     err = kestu_obj_create(&window, "window", pool);
 *     err = kestu_obj_create(&button, "ok", kestu_obj_get_pool(window));
 *     err = kestu_obj_addc(window, button);        // kestu_obj_getc(window, "ok") == button
 *     kestu_obj_destroy(window);                   // and with it the button
 *
 * An object lives until kestu_obj_destroy, or until its pool, or a pool above it, is cleared or
 * destroyed; the same happens in either case. It owns its children and destroys them first;
 * families and pools within pools may be of any depth. Signals are in kestu_objsig.h. An object and
 * all that it is connected with belong to one thread at a time; types may be registered on many
 * threads at once, and looked up while nobody registers.
 */
#ifndef KESTU_OBJ_H
#define KESTU_OBJ_H

#include "kestu_cdl.h"
#include "kestu_strlist.h"
#include "kestu_tree.h"
#include "kestu_trie.h"
#include "kestu_uthash.h"

#include <apr_pools.h>

KESTU_BEGIN_DECLS

/* The signal that every object has from its creation and emits when it is destroyed. */
enum { KESTU_OBJ_SIGNAL_DESTROY = 1 /* emitted when the object is destroyed */ };

/* An object. Read the fields freely; change them through the functions below. */
typedef struct kestu_obj_t {
    uint32_t type;              /* the code of its type, 0 for none */
    char *name;                 /* in the object's pool, null for an object without a name */
    void *reserved;             /* null */
    apr_pool_t *pool;           /* the object's own, a child of the one it was created in */
    void *data;                 /* the user's */
    kestu_cdl_t *cleanups;      /* what is called when the object is destroyed */
    kestu_trie_t *child_names;  /* from the name of a child to its node in the tree */
    kestu_tree_t *children;     /* the node above the children: tag 0, no datum */
    struct kestu_obj_t *parent; /* set by kestu_obj_addc */
    kestu_ut_array_t *signals;  /* of kestu_osig_t (kestu_objsig.h) */
} kestu_obj_t;

/*
 * Creates an object of a type: an object called `name`, which may be null, in a child of `pool`,
 * stored through `out`.
 */
typedef kestu_error_t *(*kestu_objtype_create_func)(const char *name, kestu_obj_t **out,
                                                    apr_pool_t *pool);

/* Called with the object `obj` that is being destroyed and the `user` pointer of its registration.
 */
typedef void (*kestu_obj_cleanup_func)(kestu_obj_t *obj, void *user);

/*
 * Starts the object engine in a child of `pool`, after kestu_initialize; types and signal types
 * need it. Threads that register types and signal types at once take memory from the allocator of
 * `pool` at once, which that of kestu_pool allows. Errors are APR's under "Cannot initialize OBJECT
 * engine.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_engine_init(apr_pool_t *pool);

/*
 * Stops the object engine and forgets all types and signal types; codes are not handed out again.
 * Objects have to be destroyed before. It may be started again. The end of its pool, or of one
 * above it, stops it too. Errors are APR's under "Cannot terminate OBJECT engine correctly.", after
 * which the rest of the engine stays.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_engine_terminate(void);

/*
 * Registers a type under copies of all `names`, created by `create`, or by kestu_obj_create when
 * that is null, and stores its code through `code`, from 1 up. Errors under "Cannot register object
 * type.": APR's, KESTU_ERR_NOT_INITIALIZED (120001) while the engine is not started, and those of
 * copying; and KESTU_ERR_TYPE_EXISTS (120101), without a message of its own, when one of the names
 * is registered already. After this last error the registration of types stays locked, as callers
 * take it for a fault of the program that ends it.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_objtype_register(uint32_t *code, kestu_strlist_t *names, kestu_objtype_create_func create);

/* Whether any of `names` belongs to a registered type: not 0 when one does. */
KESTU_API int32_t kestu_objtype_is_names_exist(kestu_strlist_t *names);

/* The code of the first registered type with that `name`, or 0; `name` may be null. */
KESTU_API uint32_t kestu_objtype_query_typecode(const char *name);

/*
 * Creates an object of the type called `type_name` by the type's function, which is given `name`,
 * `out` and `pool`. Errors: "Cannot create object. Type [%s] is not registered." and those of the
 * function under "Cannot create object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_objtype_create_object(const char *type_name,
                                                                    const char *name,
                                                                    kestu_obj_t **out,
                                                                    apr_pool_t *pool);

/*
 * Creates an object with a copy of `name`, which may be null, in a new child of `pool` and stores
 * it through `out`. Errors, under "Cannot create object.", are those of APR and of allocation; the
 * object stored may then be half made, and goes with `pool`.
 *
 * Slots and cleanups may make objects in the pool of an object that is being destroyed: they end
 * with that pool. When it is ending already and its object is dead, nothing can be made there any
 * more, nor in the pool of what was made so late; the error is APR_ENOPOOL's.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_create(kestu_obj_t **out, const char *name,
                                                         apr_pool_t *pool);

/*
 * Destroys the object `obj`, in this order: emits its destroy signal; calls its cleanups; destroys
 * its children in their order; leaves its parent; drops its signals, so that everything connected
 * with it forgets it; destroys its pool. All that may be called from slots and cleanups, on this or
 * any other object: an object that is being destroyed is not destroyed twice.
 *
 * A pool in which something is just being destroyed waits until the outermost destruction on this
 * thread has ended. After one by APR, by the end of a pool, it waits on and goes with the next
 * object that is destroyed.
 */
KESTU_API void kestu_obj_destroy(kestu_obj_t *obj);

/* kestu_obj_destroy for `obj` in the shape of a callback; `tag` and `baton` are not used. */
KESTU_API void kestu_obj_destroy_callback(uint32_t tag, void *obj, void *baton);

/*
 * All of kestu_obj_destroy for `obj` but its pool: the cleanup of every object's pool. When it is
 * called by hand, kestu_obj_destroy still has to destroy the pool.
 */
KESTU_API apr_status_t kestu_obj_cleanup(void *obj);

/*
 * Gives `obj`, which must not be null, a copy of `name` in its pool, or no name for null; without
 * memory for the copy the name stays as it was. A child keeps the name that it was added under.
 * Returns null.
 */
KESTU_API kestu_error_t *kestu_obj_set_name(kestu_obj_t *obj, const char *name);

/* Sets the code of the type of `obj`, which must not be null, to `type`. Returns null. */
KESTU_API kestu_error_t *kestu_obj_set_type(kestu_obj_t *obj, uint32_t type);

/* Sets the user's datum of `obj`, which must not be null, to `data`. Returns null. */
KESTU_API kestu_error_t *kestu_obj_set_data(kestu_obj_t *obj, void *data);

/*
 * The name of `obj`, which must not be null; null when it has none. It lives as long as the object.
 */
KESTU_API const char *kestu_obj_get_name(kestu_obj_t *obj);

/* The code of the type of `obj`, which must not be null; 0 for none. */
KESTU_API uint32_t kestu_obj_get_type(kestu_obj_t *obj);

/* The user's datum of `obj`, which must not be null. */
KESTU_API void *kestu_obj_get_data(kestu_obj_t *obj);

/* The pool of `obj`, which must not be null: it ends with the object. */
KESTU_API apr_pool_t *kestu_obj_get_pool(kestu_obj_t *obj);

/*
 * Adds `child` as the last child of `parent`, which owns it from then on. Names of children are
 * unique; any number may go without one. Errors, under "Cannot add child to object", with nothing
 * changed: KESTU_ERR_CHILD_EXISTS (120102) "There is already a child with name '%s'", and those of
 * allocation.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_addc(kestu_obj_t *parent, kestu_obj_t *child);

/* The child of `parent` that was added under `name`, or null; `name` may be null. */
KESTU_API kestu_obj_t *kestu_obj_getc(kestu_obj_t *parent, const char *name);

/*
 * Takes a child away from `parent` and returns it; the child is not destroyed and its parent field
 * stays. With a `name`, the child of that name, or null when there is none; `obj` is not used then.
 * Without one, `obj`, which is returned even when it is no child; the name it was added under stays
 * taken.
 */
KESTU_API kestu_obj_t *kestu_obj_removec(kestu_obj_t *parent, const char *name, kestu_obj_t *obj);

/*
 * Takes away and returns the first child of `parent` for which `predicate`, given the child's type,
 * the child and `baton`, is not 0; null when there is none. The name it was added under stays
 * taken.
 */
KESTU_API kestu_obj_t *kestu_obj_removec_func(kestu_obj_t *parent, kestu_int_func predicate,
                                              void *baton);

/*
 * Calls `pre` and then `post` (either may be null) with `baton` for the children of `obj`, given a
 * child's type and the child; and around them all, with 0 and null, for the node above them. The
 * first result that is not null ends the walk and is returned under "Cannot walk objects childs".
 * `post` may destroy or remove the child that it is given; beyond that no child may go meanwhile,
 * nor `obj`.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_obj_child_walk_err_first(kestu_obj_t *obj,
                                                                       kestu_err_func pre,
                                                                       kestu_err_func post,
                                                                       void *baton);

/*
 * Has `func` called with `user` when `obj` is destroyed: the first one registered is called first,
 * the others from the latest back. Errors are those of allocation under "Cannot register cleanup
 * function".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_obj_cleanup_register(kestu_obj_t *obj, kestu_obj_cleanup_func func, void *user);

/* Takes back one registration of `func` with `obj`, the one that would be called first. */
KESTU_API void kestu_obj_cleanup_deregister(kestu_obj_t *obj, kestu_obj_cleanup_func func);

KESTU_END_DECLS

#endif
