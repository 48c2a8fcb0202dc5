// The terminal: its settings while a line is read, its size, its bytes.
#pragma once

#include "array.hpp"

#include "kestu_error.h"

#include <csignal>

#include <termios.h>

namespace kestu::edit {

class Terminal {
  public:
    // -1 for both: there is none.
    void attach(int in, int out);
    bool is_there() const { return in_ >= 0; }

    // Whether a person types: both ends are a terminal.
    bool is_interactive() const { return interactive_; }

    // Single keys, and pastes that are told; or as before. A signal handler may call leave().
    [[nodiscard]] kestu_error_t *enter();
    void leave() const;

    // False when nobody knows.
    bool measure(size_t &columns, size_t &rows) const;

    // Writes all of `bytes` and forgets them.
    [[nodiscard]] kestu_error_t *write(Bytes &bytes);

    // One byte of the input. At its end `at_end` is set; `got` is false then, and after a signal,
    // and when a descriptor that does not wait has nothing.
    [[nodiscard]] kestu_error_t *read(char &byte, bool &got, bool &at_end);
    bool has_more() const;

    // Whether it is ours: until leave(), which a handler may have called.
    bool is_entered() const { return entered_ != 0; }

    // Sleeps until there is input; false when a signal came first, or has put the terminal back.
    bool wait() const;

  private:
    int in_ = -1;
    int out_ = -1;
    bool interactive_ = false;
    termios before_ = {};
    mutable volatile std::sig_atomic_t entered_ = 0;
};

} // namespace kestu::edit
