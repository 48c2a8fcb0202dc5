// Start and stop of the error subsystem, and what changes in it under its lock.
#include "base/kept_errno.hpp"
#include "base/pool_text.hpp"
#include "error/error.hpp"
#include "error/lock.hpp"
#include "error/state.hpp"
#include "error/texts.hpp"

#include <algorithm>

namespace kestu {
namespace {

int lowest_free_code() {
    int code = KESTU_ERROR_FIRST_REGISTERED;
    for (const char **slot = registered_slot(code); slot && *slot; slot = registered_slot(code))
        ++code;
    return code;
}

// Makes room for one more text. False without memory.
bool add_slot(RegisteredTexts &texts, apr_pool_t *pool) {
    if (texts.count == texts.capacity) {
        const int capacity = std::max(16, 2 * texts.capacity);
        auto **begin = static_cast<const char **>(
            apr_palloc(pool, static_cast<size_t>(capacity) * sizeof(const char *)));
        if (!begin)
            return false;
        std::copy_n(texts.begin, texts.count, begin);
        texts.begin = begin;
        texts.capacity = capacity;
    }
    texts.begin[texts.count++] = nullptr;
    return true;
}

// False without memory; the code has no text then.
bool store_text(int code, const char *text) {
    if (!registered_slot(code) && !add_slot(error_state.texts, error_state.pool))
        return false;
    const char **slot = registered_slot(code);
    *slot = pool_copy(error_state.pool, text);
    return *slot;
}

} // namespace
} // namespace kestu

using namespace kestu;

int kestu_error_initialize(apr_pool_t *parent) {
    if (apr_pool_create_ex(&error_state.pool, parent, nullptr, nullptr) != APR_SUCCESS)
        return 2;
    if (apr_thread_mutex_create(&error_state.mutex, APR_THREAD_MUTEX_DEFAULT, error_state.pool) !=
        APR_SUCCESS) {
        error_state.mutex = nullptr;
        return 4;
    }
    KestuDLlistStopWalking = kestu_error_create_i(KESTU_ERROR_ERROR, 0, 0, nullptr, nullptr,
                                                  nullptr, "KestuDLlistStopWalking");
    return 0;
}

// Takes back what was made, which after a failed start may be nothing.
void kestu_error_terminate(void) {
    const apr_status_t status =
        error_state.mutex ? apr_thread_mutex_destroy(error_state.mutex) : APR_SUCCESS;
    if (status != APR_SUCCESS)
        give_up(status, "Cannot correctly terminate KesTU error system.");
    if (error_state.pool)
        apr_pool_destroy(error_state.pool);
    error_state.pool = nullptr;
    error_state.mutex = nullptr;
    error_state.texts = {};
}

kestu_error_t *kestu_error_register(int *code, const char *text) {
    constexpr const char *action = "Cannot register error type.";
    const KeptErrno kept;
    bool stored = false;
    {
        const StateLock lock(action);
        *code = lowest_free_code();
        stored = store_text(*code, text);
    }
    if (!stored)
        give_up_without_memory(APR_ENOMEM, action);
    return nullptr;
}

// Kept: unlike its siblings it returns a failure to lock. Relied on by: callers.
kestu_error_t *kestu_error_deregister(int code) {
    constexpr const char *action = "Cannot deregister error type.";
    if (apr_status_t status = apr_thread_mutex_lock(error_state.mutex); status != APR_SUCCESS)
        return wrap(fail_apr(status), action);
    if (const char **slot = registered_slot(code))
        *slot = nullptr;
    if (apr_status_t status = apr_thread_mutex_unlock(error_state.mutex); status != APR_SUCCESS)
        give_up(status, action);
    return nullptr;
}

kestu_error_malfunction_func
kestu_error_set_malfunction_handler(kestu_error_malfunction_func handler) {
    const kestu_error_malfunction_func previous = kestu_error_get_malfunction_handler();
    const StateLock lock("Cannot set malfunction handler.");
    error_state.malfunction_handler = handler;
    return previous;
}
