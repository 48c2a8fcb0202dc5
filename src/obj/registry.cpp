// Start and stop of the object engine, and the locks of what is registered.
#include "obj/registry.hpp"

#include "base/kept_errno.hpp"
#include "kestu_obj.h"

using namespace kestu;

namespace {

// Whoever destroys the engine's pool stops the engine. A start without a stop before it leaves an
// older pool, which may hold records still.
apr_status_t forget_all(void *pool) {
    engine.type_list = nullptr;
    engine.signal_type_list = nullptr;
    if (pool != engine.pool)
        return APR_SUCCESS;
    engine.pool = engine.types.pool = engine.signal_types.pool = nullptr;
    engine.types.lock = engine.signal_types.lock = nullptr;
    return APR_SUCCESS;
}

apr_status_t start(apr_pool_t *parent) {
    const KeptErrno kept;
    apr_status_t status = apr_pool_create_ex(&engine.pool, parent, nullptr, nullptr);
    if (status != APR_SUCCESS)
        return status;
    apr_pool_tag(engine.pool, "MainObjectsPool");
    apr_pool_cleanup_register(engine.pool, engine.pool, forget_all, apr_pool_cleanup_null);
    engine.types.pool = engine.pool;
    status = apr_pool_create_ex(&engine.signal_types.pool, engine.pool, nullptr, nullptr);
    if (status == APR_SUCCESS)
        status = apr_thread_mutex_create(&engine.types.lock, APR_THREAD_MUTEX_DEFAULT, engine.pool);
    if (status == APR_SUCCESS)
        status = apr_thread_mutex_create(&engine.signal_types.lock, APR_THREAD_MUTEX_DEFAULT,
                                         engine.pool);
    return status;
}

apr_status_t destroy_lock(Registry &registry) {
    const apr_status_t status =
        registry.lock ? apr_thread_mutex_destroy(registry.lock) : APR_SUCCESS;
    if (status == APR_SUCCESS)
        registry.lock = nullptr;
    return status;
}

apr_status_t stop() {
    kestu_dl_destroy(&engine.type_list);
    kestu_cdl_destroy(&engine.signal_type_list);
    apr_status_t status = destroy_lock(engine.types);
    if (status == APR_SUCCESS)
        status = destroy_lock(engine.signal_types);
    if (status == APR_SUCCESS && engine.pool)
        apr_pool_destroy(engine.pool);
    return status;
}

} // namespace

namespace kestu {

constinit Engine engine = {.pool = nullptr,
                           .types = {nullptr, nullptr, 1, false},
                           .signal_types = {nullptr, nullptr, 100, true},
                           .type_list = nullptr,
                           .signal_type_list = nullptr};

kestu_error_t *lock(const Registry &registry) {
    if (!registry.lock)
        return fail(KESTU_ERR_NOT_INITIALIZED);
    const apr_status_t status = apr_thread_mutex_lock(registry.lock);
    return status == APR_SUCCESS ? nullptr : fail_apr(status);
}

void unlock(const Registry &registry, const char *action) {
    const apr_status_t status = apr_thread_mutex_unlock(registry.lock);
    if (status != APR_SUCCESS)
        kestu_error_malfunction(kestu_error_create_i(KESTU_ERROR_MALFUNCTION, 0, 0, nullptr,
                                                     nullptr, fail_apr(status), action));
}

kestu_error_t *unlock_after(const Registry &registry, kestu_error_t *err) {
    const apr_status_t status = apr_thread_mutex_unlock(registry.lock);
    if (status == APR_SUCCESS)
        return err;
    kestu_error_t *both = kestu_error_compose_create(err, fail_apr(status));
    return registry.must_unlock ? kestu_error_malfunction(both) : both;
}

} // namespace kestu

kestu_error_t *kestu_obj_engine_init(apr_pool_t *pool) {
    const apr_status_t status = start(pool);
    return status == APR_SUCCESS ? nullptr
                                 : wrap(fail_apr(status), "Cannot initialize OBJECT engine.");
}

kestu_error_t *kestu_obj_engine_terminate(void) {
    const apr_status_t status = stop();
    return status == APR_SUCCESS
               ? nullptr
               : wrap(fail_apr(status), "Cannot terminate OBJECT engine correctly.");
}
