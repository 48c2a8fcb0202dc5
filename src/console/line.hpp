// The text that is edited: a buffer that grows, how much of it is used, and the cursor.
#pragma once

#include "kestu_readline.h"

#include <cstddef>

namespace kestu {

// It lives in the context, and is terminated after every change.
class Line {
  public:
    // The room that a line begins with.
    static constexpr size_t first_size = 20;

    explicit Line(kestu_ri_t &ctx) : ctx_(ctx) {}

    // Releases the last line and begins with an empty one. False without memory.
    bool begin();

    size_t length() const { return length_; }
    size_t cursor() const { return cursor_; }
    const char *text() const { return ctx_.line; }

    void go_to_begin() { cursor_ = 0; }
    void go_to_end() { cursor_ = length_; }
    void go_left() { cursor_ -= cursor_ > 0; }
    void go_right() { cursor_ += cursor_ < length_; }

    // Puts a character in front of the cursor. False, with the line as it was, without memory.
    bool insert(char character);
    void remove_before_cursor();
    void remove_at_cursor();
    void clear();

    // Takes note of a text that stands in the buffer now. The cursor goes to its end.
    void measure();

  private:
    kestu_ri_t &ctx_;
    size_t length_ = 0;
    size_t cursor_ = 0;
};

} // namespace kestu
