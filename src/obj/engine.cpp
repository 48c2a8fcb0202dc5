// Start and stop of the object engine, and its locks.
#include "obj/engine.hpp"

#include "kestu_obj.h"

using namespace kestu;

namespace kestu {

constinit Engine engine = {.pool = nullptr,
                           .signal_type_pool = nullptr,
                           .type_lock = nullptr,
                           .signal_type_lock = nullptr,
                           .types = nullptr,
                           .signal_types = nullptr,
                           .next_type_code = 1,
                           .next_signal_code = 100};

kestu_error_t *lock(apr_thread_mutex_t *mutex) {
    if (!mutex)
        return fail(120001);
    const apr_status_t status = apr_thread_mutex_lock(mutex);
    return status == APR_SUCCESS ? nullptr : fail_apr(status);
}

kestu_error_t *unlock_after(apr_thread_mutex_t *mutex, kestu_error_t *err) {
    const apr_status_t status = apr_thread_mutex_unlock(mutex);
    return status == APR_SUCCESS ? err : kestu_error_compose_create(err, fail_apr(status));
}

void unlock(apr_thread_mutex_t *mutex, const char *action) {
    const apr_status_t status = apr_thread_mutex_unlock(mutex);
    if (status != APR_SUCCESS)
        kestu_error_malfunction(kestu_error_create_i(KESTU_ERROR_MALFUNCTION, 0, 0, nullptr,
                                                     nullptr, fail_apr(status), action));
}

} // namespace kestu

namespace {

apr_status_t destroy_lock(apr_thread_mutex_t *&mutex) {
    const apr_status_t status = mutex ? apr_thread_mutex_destroy(mutex) : APR_SUCCESS;
    if (status == APR_SUCCESS)
        mutex = nullptr;
    return status;
}

apr_status_t start(apr_pool_t *parent) {
    apr_status_t status = apr_pool_create_ex(&engine.pool, parent, nullptr, nullptr);
    if (status != APR_SUCCESS)
        return status;
    apr_pool_tag(engine.pool, "MainObjectsPool");
    status = apr_pool_create_ex(&engine.signal_type_pool, engine.pool, nullptr, nullptr);
    if (status != APR_SUCCESS)
        return status;
    status = apr_thread_mutex_create(&engine.type_lock, APR_THREAD_MUTEX_DEFAULT, engine.pool);
    if (status != APR_SUCCESS)
        return status;
    return apr_thread_mutex_create(&engine.signal_type_lock, APR_THREAD_MUTEX_DEFAULT, engine.pool);
}

apr_status_t stop() {
    kestu_dl_destroy(&engine.types);
    kestu_cdl_destroy(&engine.signal_types);
    apr_status_t status = destroy_lock(engine.type_lock);
    if (status == APR_SUCCESS)
        status = destroy_lock(engine.signal_type_lock);
    if (status == APR_SUCCESS && engine.pool) {
        apr_pool_destroy(engine.pool);
        engine.pool = nullptr;
    }
    return status;
}

} // namespace

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
