// Object types.
#include "kestu_obj.h"

#include "base/kept_errno.hpp"
#include "obj/registry.hpp"

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
        kestu_dl_walk_ptr_first(engine.type_list, has_name, const_cast<char *>(name)));
}

kestu_error_t *add_type(uint32_t code, kestu_strlist_t *names, kestu_objtype_create_func create) {
    const KeptErrno kept;
    apr_pool_t *pool = engine.types.pool;
    auto *type = static_cast<Type *>(apr_palloc(pool, sizeof(Type)));
    if (!type)
        return fail(KESTU_ERR_NO_MEMORY);
    *type = {code, nullptr, create ? create : create_plain};
    kestu_error_t *err = kestu_strlist_create(&type->names, pool);
    if (!err)
        err = kestu_strlist_copy(type->names, names, pool);
    if (!err)
        err = kestu_dl_append(&engine.type_list, 0, type, nullptr, pool);
    return err;
}

} // namespace

kestu_error_t *kestu_objtype_register(uint32_t *code, kestu_strlist_t *names,
                                      kestu_objtype_create_func create) {
    const auto refuse = [=] {
        return kestu_objtype_is_names_exist(names) ? fail(KESTU_ERR_TYPE_EXISTS) : nullptr;
    };
    const auto add = [=](uint32_t next) {
        *code = next;
        return add_type(next, names, create);
    };
    return enrol(engine.types, "Cannot register object type.", refuse, add);
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
    return wrap(type->create(name, out, pool), "Cannot create object.");
}
