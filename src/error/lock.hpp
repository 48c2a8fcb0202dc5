// The lock of the error subsystem, held for the life of the object.
#pragma once

#include "error/error.hpp"
#include "error/state.hpp"

namespace kestu {

class StateLock {
  public:
    // A mutex that cannot be locked or unlocked is a malfunction of `action`.
    explicit StateLock(const char *action) : action_(action) {
        check(apr_thread_mutex_lock(error_state.mutex));
    }
    ~StateLock() { check(apr_thread_mutex_unlock(error_state.mutex)); }
    StateLock(const StateLock &) = delete;
    StateLock &operator=(const StateLock &) = delete;

  private:
    void check(apr_status_t status) const {
        if (status != APR_SUCCESS)
            give_up(status, action_);
    }

    const char *action_;
};

} // namespace kestu
