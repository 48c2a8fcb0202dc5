// The cleanups that users register with objects.
#include "obj/cleanups.hpp"

#include "base/kept_errno.hpp"
#include "error/error.hpp"
#include "kestu_cdl.h"

using namespace kestu;

namespace {

struct Cleanup {
    kestu_obj_cleanup_func func;
    void *user;
};

kestu_error_t *add_cleanup(kestu_obj_t *obj, const Cleanup &cleanup) {
    const KeptErrno kept;
    auto *record = static_cast<Cleanup *>(apr_palloc(obj->pool, sizeof(Cleanup)));
    if (!record)
        return fail(KESTU_ERR_NO_MEMORY);
    *record = cleanup;
    return kestu_cdl_add(&obj->cleanups, 0, record, nullptr, obj->pool);
}

} // namespace

namespace kestu {

void call_cleanups(Object &object) {
    const auto call = [](uint32_t, void *data, void *obj) {
        const auto *cleanup = static_cast<const Cleanup *>(data);
        if (cleanup->func)
            cleanup->func(static_cast<kestu_obj_t *>(obj), cleanup->user);
    };
    kestu_cdl_walk(object.cleanups, call, static_cast<kestu_obj_t *>(&object));
}

} // namespace kestu

kestu_error_t *kestu_obj_cleanup_register(kestu_obj_t *obj, kestu_obj_cleanup_func func,
                                          void *user) {
    return wrap(add_cleanup(obj, {func, user}), "Cannot register cleanup function");
}

void kestu_obj_cleanup_deregister(kestu_obj_t *obj, kestu_obj_cleanup_func func) {
    const auto has_func = [](uint32_t, void *data, void *wanted) -> int {
        return static_cast<const Cleanup *>(data)->func ==
               *static_cast<kestu_obj_cleanup_func *>(wanted);
    };
    kestu_cdl_set_free(kestu_cdl_walk_node_first(obj->cleanups, has_func, &func));
}
