// The lock of the error subsystem, held for the life of the object.
#pragma once

#include "error/error.hpp"
#include "error/system.hpp"

namespace kestu {

class SystemLock {
  public:
    // A mutex that cannot be locked or unlocked is a malfunction of `locked_action`.
    explicit SystemLock(const char *locked_action) : action(locked_action) {
        check(apr_thread_mutex_lock(error_system.mutex));
    }
    ~SystemLock() { check(apr_thread_mutex_unlock(error_system.mutex)); }
    SystemLock(const SystemLock &) = delete;
    SystemLock &operator=(const SystemLock &) = delete;

  private:
    void check(apr_status_t status) const {
        if (status != APR_SUCCESS)
            give_up(status, action);
    }

    const char *action;
};

} // namespace kestu
