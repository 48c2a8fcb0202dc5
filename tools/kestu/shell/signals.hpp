// Signals that wait.
#pragma once

#include <csignal>

namespace program {

// While it lives, the signals of `held` wait in this thread, and only they do.
class SignalsHeld {
  public:
    explicit SignalsHeld(const sigset_t &held) { pthread_sigmask(SIG_SETMASK, &held, &before_); }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

  private:
    sigset_t before_;
};

// All signals but these.
template <typename... Signals>
sigset_t all_but(Signals... signals) {
    sigset_t set;
    sigfillset(&set);
    (sigdelset(&set, signals), ...);
    return set;
}

} // namespace program
