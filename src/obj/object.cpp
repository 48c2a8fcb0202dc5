// Objects: creation and what they carry.
#include "obj/object.hpp"

#include "base/kept_errno.hpp"
#include "base/pool_text.hpp"
#include "error/error.hpp"
#include "kestu_objsig.h"
#include "obj/pools.hpp"

using namespace kestu;

namespace {

// False without memory: then the object keeps the name that it has.
bool set_name(kestu_obj_t *obj, const char *name) {
    const KeptErrno kept;
    char *copy = name ? pool_copy(obj->pool, name) : nullptr;
    if (name && !copy)
        return false;
    obj->name = copy;
    return true;
}

kestu_error_t *create(kestu_obj_t **out, const char *name, apr_pool_t *parent_pool) {
    const KeptErrno kept;
    Object *object = nullptr;
    const apr_status_t status = make_object(&object, parent_pool);
    if (status != APR_SUCCESS)
        return fail_apr(status);
    *out = object;
    apr_pool_cleanup_register(object->pool, static_cast<kestu_obj_t *>(object), kestu_obj_cleanup,
                              apr_pool_cleanup_null);
    if (!set_name(object, name))
        return fail(KESTU_ERR_NO_MEMORY);
    if (kestu_error_t *err = kestu_obj_add_signal(object, KESTU_OBJ_SIGNAL_DESTROY))
        return err;
    object->children = &object->root;
    return kestu_triem_create(&object->child_names);
}

} // namespace

kestu_error_t *kestu_obj_create(kestu_obj_t **out, const char *name, apr_pool_t *pool) {
    return wrap(create(out, name, pool), "Cannot create object.");
}

// Kept: null whatever happens. Relied on by: callers that drop the result.
kestu_error_t *kestu_obj_set_name(kestu_obj_t *obj, const char *name) {
    set_name(obj, name);
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
