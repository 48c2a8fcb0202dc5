// Pools in tests.
#pragma once

#include "kestu_lib.h"
#include "support/alloc_failure.hpp"

namespace kestu::test {

// A pool that lives as long as the object.
class Pool {
  public:
    Pool() { apr_pool_create_ex(&pool_, kestu_pool, nullptr, nullptr); }
    ~Pool() { apr_pool_destroy(pool_); }
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;
    operator apr_pool_t *() const { return pool_; }

    // What `attempt` returns when its first request to this pool, or for a new one, is refused.
    template <typename Attempt>
    auto without_memory(Attempt attempt) {
        use_up();
        AllocFailure failure(1, pools_too);
        return attempt();
    }

  private:
    // Takes what room is left, so that the next request of any size goes to the system.
    void use_up() {
        AllocFailure failure(1, all_after | pools_too);
        while (apr_palloc(pool_, 8)) {
        }
    }

    apr_pool_t *pool_ = nullptr;
};

} // namespace kestu::test
