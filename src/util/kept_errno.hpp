// errno belongs to the caller: whoever may change it on the way gives it back.
#pragma once

#include <cerrno>

namespace kestu {

// Puts errno back, at the end of a block, to what it was at the beginning.
class KeptErrno {
  public:
    KeptErrno() = default;
    ~KeptErrno() {
        // Under -fno-math-errno the compiler believes that malloc leaves errno alone, and that
        // there is nothing to put back.
        asm volatile("" : "=m"(errno));
        errno = value_;
    }
    KeptErrno(const KeptErrno &) = delete;
    KeptErrno &operator=(const KeptErrno &) = delete;

  private:
    const int value_ = errno;
};

} // namespace kestu
