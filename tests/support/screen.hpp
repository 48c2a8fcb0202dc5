// What a terminal shows of the bytes that a program writes to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestu::test {

// A plain terminal: it wraps lines and scrolls, and knows the control characters and sequences of
// the line editor and the shell. Others stand in the text, so that a test sees them.
// Apart from the Paper of kestu_edit: bytes come split here, and no Unicode library is linked.
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

    size_t width_;
    size_t height_;
    std::vector<std::string> rows_;
    size_t row_ = 0;
    bool wraps_ = true;
    size_t column_ = 0;  // `width_` while the cursor waits behind the last column
    std::string escape_; // a sequence that has begun
};

} // namespace kestu::test
