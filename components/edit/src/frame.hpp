// What is to be seen of a line: rows of cells, and where the cursor stands.
#pragma once

#include "style.hpp"

namespace kestu::edit {

struct Cell {
    uint32_t at; // in the frame's bytes
    uint16_t length;
    uint16_t width; // columns: 1 or 2
    Style style;
};

class Frame {
  public:
    struct Row {
        size_t first; // cell
        size_t count;
        size_t width; // columns
    };

    // Empties it, for rows of `columns`, at least 2; 0 for a single row without an end.
    void begin(size_t columns);

    // Adds text, cluster by cluster; a byte of `styles` for each of its bytes, or null for `style`.
    void add(std::string_view text, const Style &style, const uint8_t *styles = nullptr);

    // As add, for a prompt: sequences of colours change the style, others are left out.
    void add_prompt(std::string_view prompt);

    // The place behind what was added last is that of the cursor; whether a row ends there.
    void mark_cursor(bool row_ends);
    void end_row();

    // Cuts the only row to the columns from `left` on, as many as fit into `columns`.
    void cut(size_t left, size_t columns);

    // Whether memory was enough for all.
    bool whole() const { return whole_; }
    bool empty() const { return rows_.empty(); }
    size_t row_count() const { return rows_.size(); }
    const Row &row(size_t index) const { return rows_[index]; }
    const Cell *cells(const Row &row) const { return cells_.data() + row.first; }
    std::string_view text(const Cell &cell) const { return {bytes_.data() + cell.at, cell.length}; }
    size_t cursor_row() const { return cursor_row_; }
    size_t cursor_column() const { return cursor_column_; }

    void clear();
    void wipe() { bytes_.wipe(); }
    void swap(Frame &other);

  private:
    void put(std::string_view bytes, size_t width, const Style &style);
    size_t add_plain(std::string_view text, const Style &style, const uint8_t *styles);
    size_t add_cluster(std::string_view text, size_t at, const Style &style);
    void put_blanks(size_t count, const Style &style);

    Bytes bytes_;
    Array<Cell> cells_;
    Array<Row> rows_;
    size_t columns_ = 0;
    size_t cursor_row_ = 0;
    size_t cursor_column_ = 0;
    bool whole_ = true;
};

} // namespace kestu::edit
