// Making the system's allocator fail on purpose.
#pragma once

#include <cstddef>

namespace kestu::test {

// While it lives, the calling thread's allocation number `failing` (1 is the next one) fails, and
// all later ones too when `all_after` is set. Other threads are left alone.
class AllocFailure {
  public:
    explicit AllocFailure(size_t failing, bool all_after = false);
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
