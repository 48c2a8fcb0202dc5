// What a terminal shows of the bytes that a program writes to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestu::test {

// A plain terminal: it wraps lines and scrolls, and knows the control characters and sequences of
// the line editor and the shell. Others stand in the text, so that a test sees them.
class Screen {
  public:
    Screen(int columns, int rows);

    void write(std::string_view bytes);

    // As a window does: what no longer fits is cut.
    void resize(int columns, int rows);

    // The text row by row, without blanks at the ends and empty rows at the end; "|" stands where
    // the cursor is.
    std::string shown() const;

  private:
    void put(char c);
    void next_row();
    bool control(char c);
    void sequence();

    size_t width;
    size_t height;
    std::vector<std::string> rows;
    size_t row = 0;
    bool wraps = true;
    size_t column = 0;  // `width` while the cursor waits behind the last column
    std::string escape; // a sequence that has begun
};

} // namespace kestu::test
