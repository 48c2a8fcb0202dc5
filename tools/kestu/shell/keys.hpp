// The keys in the bytes that a terminal sends.
#pragma once

#include <string_view>

namespace program {

// What the editor reads for the keys that are more than their byte, whatever the terminal sends.
namespace key {
constexpr std::string_view up = "\x1b[A", down = "\x1b[B", right = "\x1b[C", left = "\x1b[D",
                           end = "\x1bOF", home = "\x1bOH", remove = "\x1b[3~";
constexpr std::string_view interrupt = "\x03", redraw = "\x0b", enter = "\n";
} // namespace key

// Takes a terminal's output byte by byte. Terminals disagree on many sequences, which become one
// here, and keys that the editor does not know vanish.
class KeyDecoder {
  public:
    // The key that `byte` completes; empty while none is complete. Valid until the next call.
    std::string_view take(char byte);

  private:
    enum class State { plain, escape, sequence, single_shift };

    std::string_view plain(char byte);
    std::string_view control(char byte);
    std::string_view sequence(char byte);

    State state_ = State::plain;
    int number_ = 0; // the first parameter of a sequence
    bool first_ = true;
    char single_ = 0;
};

} // namespace program
