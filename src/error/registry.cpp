// Start and stop of the error subsystem, and the texts that users register.
#include "error/error.hpp"

#include "base/pool_text.hpp"
#include "error/lock.hpp"
#include "error/system.hpp"

using namespace kestu;

constinit kestu_error_t *KestuDLlistStopWalking = nullptr;

namespace {

const char **slot(int code) {
    const apr_array_header_t *texts = error_system.texts;
    const int64_t index = int64_t{code} - KESTU_ERROR_FIRST_REGISTERED;
    if (!texts || index < 0 || index >= texts->nelts)
        return nullptr;
    return reinterpret_cast<const char **>(texts->elts) + index;
}

int lowest_free_code() {
    int code = KESTU_ERROR_FIRST_REGISTERED;
    while (const char **text = slot(code)) {
        if (!*text)
            return code;
        ++code;
    }
    *static_cast<const char **>(apr_array_push(error_system.texts)) = nullptr;
    return code;
}

} // namespace

namespace kestu {

const char *registered_text(int code) {
    const char **text = slot(code);
    return text ? *text : nullptr;
}

} // namespace kestu

int kestu_error_initialize(apr_pool_t *parent) {
    if (apr_pool_create_ex(&error_system.pool, parent, nullptr, nullptr) != APR_SUCCESS)
        return 2;
    error_system.texts = apr_array_make(error_system.pool, 0, sizeof(const char *));
    if (apr_thread_mutex_create(&error_system.mutex, APR_THREAD_MUTEX_DEFAULT, error_system.pool) !=
        APR_SUCCESS)
        return 4;
    KestuDLlistStopWalking = kestu_error_create_i(KESTU_ERROR_ERROR, 0, 0, nullptr, nullptr,
                                                  nullptr, "KestuDLlistStopWalking");
    return 0;
}

void kestu_error_terminate(void) {
    if (apr_status_t status = apr_thread_mutex_destroy(error_system.mutex); status != APR_SUCCESS)
        give_up(status, "Cannot correctly terminate KesTU error system.");
    apr_pool_destroy(error_system.pool);
    error_system.texts = nullptr;
}

kestu_error_t *kestu_error_register(int *code, const char *text) {
    constexpr const char *action = "Cannot register error type.";
    SystemLock lock(action);
    *code = lowest_free_code();
    *slot(*code) = pool_copy(error_system.pool, text);
    if (!*slot(*code))
        give_up_without_memory(APR_ENOMEM, action);
    return nullptr;
}

// Unlike its siblings it returns a failure to lock: callers rely on that.
kestu_error_t *kestu_error_deregister(int code) {
    constexpr const char *action = "Cannot deregister error type.";
    if (apr_status_t status = apr_thread_mutex_lock(error_system.mutex); status != APR_SUCCESS)
        return wrap(fail_apr(status), action);
    if (const char **text = slot(code))
        *text = nullptr;
    if (apr_status_t status = apr_thread_mutex_unlock(error_system.mutex); status != APR_SUCCESS)
        give_up(status, action);
    return nullptr;
}
