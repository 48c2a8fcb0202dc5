// Several ways ("kernels") to compute the same, of which the best that the processor can run is
// chosen at the first use.
#pragma once

#include "base/cpu_features.hpp"

#include <atomic>
#include <span>

namespace kestu {

// A Kernel holds functions and a member `needs`, the feature that they need or null. What is chosen
// is the same for every thread, so threads that meet at the first use do no harm.
template <typename Kernel>
class Dispatch {
  public:
    // `all_kernels` go from the plainest, which needs nothing, to the fastest. `first_use` holds
    // functions that call choose() and then the chosen kernel's.
    constexpr Dispatch(std::span<const Kernel> all_kernels, const Kernel &first_use)
        : kernels_(all_kernels), resolver_(first_use), in_use_(&first_use) {}

    const Kernel &current() const { return *in_use_.load(std::memory_order_relaxed); }

    const Kernel &choose() {
        const Kernel &kernel = best(cpu_features());
        force(kernel);
        return kernel;
    }

    std::span<const Kernel> all() const { return kernels_; }

    const Kernel &best(const CpuFeatures &features) const {
        const Kernel *found = nullptr;
        for (const Kernel &kernel : kernels_)
            if (!kernel.needs || features.*kernel.needs)
                found = &kernel;
        return *found;
    }

    // Takes `kernel`, which must run on this processor, from now on; or chooses anew at the next
    // use.
    void force(const Kernel &kernel) { in_use_.store(&kernel, std::memory_order_relaxed); }
    void forget() { force(resolver_); }

  private:
    std::span<const Kernel> kernels_;
    const Kernel &resolver_;
    std::atomic<const Kernel *> in_use_;
};

} // namespace kestu
