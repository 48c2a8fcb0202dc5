// What a terminal shows, and the least that must be written to make it show something else.
#pragma once

#include "frame.hpp"

namespace kestu::edit {

class Screen {
  public:
    void resize(size_t columns, size_t rows);
    size_t columns() const { return columns_; }
    size_t rows() const { return rows_; }

    // Adds to `out` what makes the terminal show `next`, which is taken; of more rows than there
    // are those around the cursor. False when no memory is left; the next drawing then begins from
    // nothing.
    [[nodiscard]] bool paint(Frame &next, Bytes &out);

    // Takes everything off the terminal, the cursor at the beginning of it.
    [[nodiscard]] bool erase(Bytes &out);

    // As erase, on a terminal that has folded its rows to `columns`.
    [[nodiscard]] bool fold(size_t columns, Bytes &out);

    // Puts the cursor on a row below all, and forgets them.
    [[nodiscard]] bool leave(Bytes &out);

    // From now on nothing is shown, and the cursor stands in an empty row. Of a text that is drawn
    // again the same rows are seen.
    void forget();
    void wipe() { shown_.wipe(); }

  private:
    size_t visible(const Frame &frame) const;
    size_t choose_top(const Frame &next) const;
    bool paint_row(const Frame &next, size_t row, size_t top, Bytes &out);
    bool move(size_t row, size_t column, Bytes &out);
    bool put_cells(const Frame &frame, const Cell *first, const Cell *last, Bytes &out);
    bool set_style(const Style &style, Bytes &out);

    size_t columns_ = 80;
    size_t rows_ = 24;
    Frame shown_;
    size_t top_ = 0;    // the row of the text that stands uppermost
    size_t row_ = 0;    // of the cursor, below that
    size_t column_ = 0; // `columns_` while it waits behind the last one
    bool lost_ = false; // what stands on the terminal is not known
    Style style_;
};

} // namespace kestu::edit
