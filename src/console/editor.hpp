// The line editor apart from the terminal: keys go in, what they ask of the terminal comes out.
#pragma once

#include "console/line.hpp"

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

// One line being edited in the context.
class Editor {
  public:
    explicit Editor(kestu_ri_t &ctx) : ctx_(ctx), line_(ctx) {}

    // Releases the last line and begins with an empty one. Fails when no memory is left.
    [[nodiscard]] kestu_error_t *begin();

    // Acts on a key as dl_readchar returns it; failed reads are the caller's.
    [[nodiscard]] Effect feed(int key);

    const Line &line() const { return line_; }

  private:
    struct Binding {
        int key;
        Effect (Editor::*act)();
    };
    static const Binding bindings[];

    Effect nothing() { return {}; }
    Effect go_to_begin();
    Effect go_to_end();
    Effect go_left();
    Effect go_right();
    Effect remove_before_cursor();
    Effect remove_at_cursor();
    Effect clear_screen();
    Effect recall_older();
    Effect recall_newer();
    Effect finish_empty();
    Effect stop_when_empty();
    Effect enter();
    Effect enter_into_history();
    Effect fail_unreadable();
    Effect insert(char character);
    Effect recall(int direction);

    kestu_ri_t &ctx_;
    Line line_;
};

} // namespace kestu
