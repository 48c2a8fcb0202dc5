// Pools in tests.
#pragma once

#include "fuzz/check.hpp"
#include "support/alloc_failure.hpp"

namespace kestu::test {

// What `attempt` returns when its first request to the pool, or for a new one, is refused.
template <typename Attempt>
auto without_memory(apr_pool_t *pool, Attempt attempt) {
    {
        // Takes what room is left, so that the next request of any size goes to the system.
        AllocFailure failure(1, all_after | pools_too);
        while (apr_palloc(pool, 8)) {
        }
    }
    AllocFailure failure(1, pools_too);
    return attempt();
}

// A pool that lives as long as the object.
class Pool : public fuzz::ScratchPool {
  public:
    template <typename Attempt>
    auto without_memory(Attempt attempt) {
        return test::without_memory(*this, attempt);
    }
};

} // namespace kestu::test
