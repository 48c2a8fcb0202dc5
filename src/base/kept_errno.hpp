// errno belongs to the caller: whoever may change it on the way gives it back.
#pragma once

#include <cerrno>

namespace kestu {

// Where the thread's errno stands, looked up once: the C library's answer costs a call.
[[gnu::tls_model("initial-exec")]] inline constinit thread_local int *errno_of_thread = nullptr;

inline int *errno_place() {
    if (!errno_of_thread) [[unlikely]]
        errno_of_thread = &errno;
    return errno_of_thread;
}

// Puts errno back, at the end of a block, to what it was at the beginning.
class KeptErrno {
  public:
    KeptErrno() = default;
    ~KeptErrno() {
        // Under -fno-math-errno the compiler believes that malloc leaves errno alone, and that
        // there is nothing to put back.
        asm volatile("" : "=m"(*place_));
        *place_ = value_;
    }
    KeptErrno(const KeptErrno &) = delete;
    KeptErrno &operator=(const KeptErrno &) = delete;

  private:
    int *const place_ = errno_place();
    const int value_ = *place_;
};

} // namespace kestu
