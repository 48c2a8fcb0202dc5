// The terminal: its settings while keys are read, its size, and drawing the line.
#pragma once

#include "kestu_readline.h"

#include <cstddef>

namespace kestu {

// The settings for reading single keys, made of those found. Output is left as it is, and so are
// the keys that raise signals.
termios raw_settings(termios found);

// Remembers the settings of the terminal and replaces them, or puts them back.
void enter_raw_mode(kestu_ri_t &ctx);
void leave_raw_mode(const kestu_ri_t &ctx);

// Asks the terminal for its columns and rows.
[[nodiscard]] kestu_error_t *measure_terminal(kestu_ri_t &ctx);

// Notices the next change of the window's size, but no later one.
void watch_window();

// As measure_terminal, if the window has changed since it was watched or measured last. `changed`
// tells whether it has.
[[nodiscard]] kestu_error_t *follow_window(kestu_ri_t &ctx, bool &changed);

// Drawing, silent where nothing is echoed. All but erase_row flush what they draw.
void print(const kestu_ri_t &ctx, const char *text);
void erase_row(const kestu_ri_t &ctx);
void show_prompt(const kestu_ri_t &ctx);
void show_line(const kestu_ri_t &ctx);
void show_line_and_cursor(const kestu_ri_t &ctx, size_t cursor);

} // namespace kestu
