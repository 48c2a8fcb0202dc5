// The settings of the shell's terminal while a line is typed.
#pragma once

namespace program {

// While it lives, the terminal gives every key at once, Ctrl-C as a key, and folds no lines. What
// was comes back with its end, and before the program ends or stops of a signal; when it goes on
// after a stop, the editor is asked through `keys` to draw its line again. One at a time.
class RawTerminal {
  public:
    RawTerminal(int terminal, int keys);
    ~RawTerminal();
    RawTerminal(const RawTerminal &) = delete;
    RawTerminal &operator=(const RawTerminal &) = delete;
};

} // namespace program
