// Several ways ("paths") to compute the same, of which the best that the processor can is chosen at
// the first use.
#pragma once

#include "base/cpu_features.hpp"

#include <atomic>
#include <span>

namespace kestu {

// A Path holds functions and a member `needs`, the feature that they need or null. What is chosen
// is the same for every thread, so threads that meet at the first use do no harm.
template <typename Path>
class Dispatch {
  public:
    // `all_paths` go from the plainest, which needs nothing, to the fastest. `first_use` holds
    // functions that call choose() and then the chosen path's.
    constexpr Dispatch(std::span<const Path> all_paths, const Path &first_use)
        : paths_(all_paths), resolver_(first_use), in_use_(&first_use) {}

    const Path &current() const { return *in_use_.load(std::memory_order_relaxed); }

    const Path &choose() {
        const Path &path = best(cpu_features());
        force(path);
        return path;
    }

    std::span<const Path> all() const { return paths_; }

    const Path &best(const CpuFeatures &features) const {
        const Path *found = nullptr;
        for (const Path &path : paths_)
            if (!path.needs || features.*path.needs)
                found = &path;
        return *found;
    }

    // Takes `path`, which must run on this processor, from now on; or chooses anew at the next use.
    void force(const Path &path) { in_use_.store(&path, std::memory_order_relaxed); }
    void forget() { force(resolver_); }

  private:
    std::span<const Path> paths_;
    const Path &resolver_;
    std::atomic<const Path *> in_use_;
};

} // namespace kestu
