// A screen that shows what the editor draws, in characters of one or two columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kestu::test {

// Apart from support/screen.hpp: the core is tested without widths, styles and utf8proc.
class Paper {
  public:
    Paper(size_t columns, size_t rows) : columns_(columns), rows_(rows, Row(columns)) {}

    void write(std::string_view bytes);

    // The rows from `first` on without blanks behind them, "|" where the cursor is; with `styles`,
    // a sequence stands before each character that has one.
    std::string shown(size_t first = 0, bool styles = false) const;
    size_t row() const { return row_; }
    size_t column() const { return column_; }
    std::string unknown; // a sequence that the editor should not write

  private:
    using Row = std::vector<std::string>; // a wide character stands in its first column
    void put(std::string_view text);
    void sequence(std::string_view text);
    void feed();

    size_t columns_;
    std::vector<Row> rows_;
    size_t row_ = 0;
    size_t column_ = 0; // `columns_` while it waits behind the last one
    std::string style_;
};

} // namespace kestu::test
