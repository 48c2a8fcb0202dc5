// Making the system's allocator fail on purpose.
#pragma once

#include <cstddef>

namespace kestu::test {

// What fails beside the chosen allocation.
enum Failing : unsigned {
    only_one = 0,
    all_after = 1, // every later allocation too
    pools_too = 2, // the blocks that APR's pools take from the system are allocations as well
};

// While it lives, the calling thread's allocation number `failing` (1 is the next one) fails. Other
// threads are left alone. With `pools_too` the making of errors may fail and so reach the
// malfunction handler.
class AllocFailure {
  public:
    explicit AllocFailure(size_t failing, unsigned how = only_one);
    ~AllocFailure();
    AllocFailure(const AllocFailure &) = delete;
    AllocFailure &operator=(const AllocFailure &) = delete;

    // Whether the chosen allocation was asked for.
    bool happened() const;
};

// Runs `attempt(n)` with the n-th allocation failing, for n = 1, 2, ... until one run asks for
// fewer than n. Returns how many runs met a failure. `attempt` must keep its own checks and
// releases.
template <typename Attempt>
size_t fail_each_allocation(Attempt attempt) {
    for (size_t n = 1;; ++n) {
        AllocFailure failure(n);
        attempt(n);
        if (!failure.happened())
            return n - 1;
    }
}

// The number of blocks that the calling thread has allocated and not freed since the program
// started. Blocks that one thread frees for another upset it.
long live_blocks();

} // namespace kestu::test
