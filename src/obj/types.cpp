// The registry of object types.
#include "kestu_obj.h"

#include "obj/engine.hpp"

#include <apr_pools.h>

using namespace kestu;

namespace {

struct Type {
    uint32_t code;
    kestu_strlist_t *names;
    kestu_objtype_create_func create;
};

kestu_error_t *create_plain(const char *name, kestu_obj_t **out, apr_pool_t *pool) {
    return kestu_obj_create(out, name, pool);
}

const Type *find_type(const char *name) {
    const auto has_name = [](uint32_t, void *type, void *wanted) -> void * {
        const bool found = kestu_strlist_is_exists(static_cast<Type *>(type)->names,
                                                   static_cast<const char *>(wanted));
        return found ? type : nullptr;
    };
    return static_cast<Type *>(
        kestu_dl_walk_ptr_first(engine.types, has_name, const_cast<char *>(name)));
}

// Appends a new type; the registry is locked and none of the names is taken.
kestu_error_t *add_type(uint32_t *code, kestu_strlist_t *names, kestu_objtype_create_func create) {
    auto *type = static_cast<Type *>(apr_palloc(engine.pool, sizeof(Type)));
    if (!type)
        return fail(120012);
    *type = {engine.next_type_code, nullptr, create ? create : create_plain};
    *code = type->code;
    kestu_error_t *err = kestu_strlist_create(&type->names, engine.pool);
    if (!err)
        err = kestu_strlist_copy(type->names, names, engine.pool);
    if (!err)
        err = kestu_dl_append(&engine.types, 0, type, nullptr, engine.pool);
    return err;
}

} // namespace

// Comes back with the lock held when a name is taken: programs treat that as the end.
kestu_error_t *kestu_objtype_register(uint32_t *code, kestu_strlist_t *names,
                                      kestu_objtype_create_func create) {
    constexpr const char *action = "Cannot register object type.";
    if (kestu_error_t *err = lock(engine.type_lock))
        return wrap(err, action);
    if (kestu_objtype_is_names_exist(names))
        return fail(120101);
    if (kestu_error_t *err = add_type(code, names, create))
        return wrap(unlock_after(engine.type_lock, err), action);
    ++engine.next_type_code;
    unlock(engine.type_lock, action);
    return nullptr;
}

int32_t kestu_objtype_is_names_exist(kestu_strlist_t *names) {
    const int count = kestu_strlist_nelts(names);
    for (int i = 0; i < count; ++i)
        if (find_type(kestu_strlist_getn(names, i)))
            return 1;
    return 0;
}

uint32_t kestu_objtype_query_typecode(const char *name) {
    const Type *type = find_type(name);
    return type ? type->code : 0;
}

kestu_error_t *kestu_objtype_create_object(const char *type_name, const char *name,
                                           kestu_obj_t **out, apr_pool_t *pool) {
    const Type *type = find_type(type_name);
    if (!type)
        return fail(0, "Cannot create object. Type [%s] is not registered.", type_name);
    if (!type->create)
        return fail(0, "Cannot create object of type [%s]. Method is not registered.", type_name);
    return wrap(type->create(name, out, pool), "Cannot create object.");
}
