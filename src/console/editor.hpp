// The line editor apart from the terminal: keys go in, what they ask of the terminal comes out.
#pragma once

#include "kestu_readline.h"

#include <cstddef>

namespace kestu {

// What is to be done after a key.
struct Effect {
    enum class Next {
        redraw, // show the line
        keep,   // leave the screen as it is
        finish, // restore the terminal and return the line
        stop,   // restore the terminal and return the error
        fail,   // return the error with the terminal as it is
    };

    Next next = Next::redraw;
    const char *print = ""; // first of all, where keys are echoed
    kestu_error_t *error = nullptr;
};

// One line being edited. It lives in the context and is terminated after every key.
class Editor {
  public:
    explicit Editor(kestu_ri_t &ctx) : context(ctx) {}

    // Releases the last line and begins with an empty one. Fails with 120012 without memory.
    [[nodiscard]] kestu_error_t *begin();

    // Acts on a key as dl_readchar returns it; failed reads are the caller's.
    [[nodiscard]] Effect press(int key);

    // The number of characters before the cursor.
    size_t position() const { return cursor; }

  private:
    Effect insert(char character);
    Effect finish_empty();
    Effect stop_when_empty() const;
    Effect enter();
    Effect enter_into_history();
    void remove(size_t index);
    void recall(int direction);

    kestu_ri_t &context;
    size_t length = 0;
    size_t cursor = 0;
};

} // namespace kestu
