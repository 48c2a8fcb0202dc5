// Objects: from creation to destruction.
#include "obj/object.hpp"

#include "base/pool_text.hpp"
#include "kestu_objsig.h"
#include "obj/signals.hpp"

#include <new>

using namespace kestu;

namespace {

// An object whose pool is about to go. When a slot destroys a pool above it, that pool has to wait
// until the destruction that is under way has ended.
struct Destruction {
    explicit Destruction(Object *destroyed);
    ~Destruction() { running = outer; }
    Destruction(const Destruction &) = delete;
    Destruction &operator=(const Destruction &) = delete;

    static Destruction *waiting_for(apr_pool_t *pool);

    static thread_local Destruction *running;

    apr_pool_t *own_pool;
    apr_pool_t *doomed; // what goes when this destruction has ended
    Destruction *outer;
};

[[gnu::tls_model("initial-exec")]] constinit thread_local Destruction *Destruction::running =
    nullptr;

Destruction::Destruction(Object *destroyed)
    : own_pool(destroyed->pool), doomed(destroyed->pool), outer(running) {
    running = this;
}

// The outermost destruction of an object that lives in `pool` or below.
Destruction *Destruction::waiting_for(apr_pool_t *pool) {
    Destruction *found = nullptr;
    for (Destruction *d = running; d; d = d->outer)
        if (apr_pool_is_ancestor(pool, d->own_pool))
            found = d;
    return found;
}

void clean_up(Object &object) {
    if (object.dying)
        return;
    const Destruction destruction(&object);
    object.dying = true;
    kestu_error_clear(kestu_obj_emit_signal(&object, KESTU_OBJ_SIGNAL_DESTROY, nullptr));
    call_cleanups(object);
    destroy_children(object);
    leave_family(object);
    be_forgotten(object);
    kestu_obj_delete_signals(&object);
}

kestu_error_t *furnish(Object &object) {
    kestu_error_t *err = kestu_obj_add_signal(&object, KESTU_OBJ_SIGNAL_DESTROY);
    if (!err)
        err = kestu_treem_create(0, nullptr, &object.children);
    if (!err)
        err = kestu_triem_create(&object.child_names);
    return err;
}

kestu_error_t *create(kestu_obj_t **out, const char *name, apr_pool_t *parent_pool) {
    apr_pool_t *pool = nullptr;
    const apr_status_t status = apr_pool_create_ex(&pool, parent_pool, nullptr, nullptr);
    if (status != APR_SUCCESS)
        return fail_apr(status);
    void *memory = apr_palloc(pool, sizeof(Object));
    if (!memory)
        return fail(120012);
    auto *object = new (memory) Object{};
    *out = object;
    object->pool = pool;
    kestu_obj_set_name(object, name);
    if (kestu_error_t *err = furnish(*object))
        return err;
    apr_pool_cleanup_register(pool, static_cast<kestu_obj_t *>(object), kestu_obj_cleanup,
                              apr_pool_cleanup_null);
    return nullptr;
}

} // namespace

kestu_error_t *kestu_obj_create(kestu_obj_t **out, const char *name, apr_pool_t *pool) {
    return wrap(create(out, name, pool), "Cannot create object.");
}

void kestu_obj_destroy(kestu_obj_t *obj) {
    if (object_of(obj)->dying)
        return;
    apr_pool_t *doomed = nullptr;
    {
        Destruction destruction(object_of(obj));
        apr_pool_cleanup_run(obj->pool, obj, kestu_obj_cleanup);
        doomed = destruction.doomed;
    }
    if (Destruction *later = Destruction::waiting_for(doomed))
        later->doomed = doomed;
    else
        apr_pool_destroy(doomed);
}

void kestu_obj_destroy_callback(uint32_t, void *obj, void *) {
    kestu_obj_destroy(static_cast<kestu_obj_t *>(obj));
}

apr_status_t kestu_obj_cleanup(void *obj) {
    clean_up(*object_of(static_cast<kestu_obj_t *>(obj)));
    return APR_SUCCESS;
}

kestu_error_t *kestu_obj_set_name(kestu_obj_t *obj, const char *name) {
    obj->name = name ? pool_copy(obj->pool, name) : nullptr;
    return nullptr;
}

kestu_error_t *kestu_obj_set_type(kestu_obj_t *obj, uint32_t type) {
    obj->type = type;
    return nullptr;
}

kestu_error_t *kestu_obj_set_data(kestu_obj_t *obj, void *data) {
    obj->data = data;
    return nullptr;
}

const char *kestu_obj_get_name(kestu_obj_t *obj) {
    return obj->name;
}

uint32_t kestu_obj_get_type(kestu_obj_t *obj) {
    return obj->type;
}

void *kestu_obj_get_data(kestu_obj_t *obj) {
    return obj->data;
}

apr_pool_t *kestu_obj_get_pool(kestu_obj_t *obj) {
    return obj->pool;
}
