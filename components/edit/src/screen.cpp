#include "screen.hpp"

#include <algorithm>
#include <cstdio>

namespace kestu::edit {
namespace {

bool add_number(const char *format, size_t number, Bytes &out) {
    char text[32];
    const int length = std::snprintf(text, sizeof text, format, number);
    return out.append({text, static_cast<size_t>(length)});
}

bool same(const Frame &a, const Cell &x, const Frame &b, const Cell &y) {
    return x.width == y.width && x.style == y.style && a.text(x) == b.text(y);
}

} // namespace

void Screen::resize(size_t columns, size_t rows) {
    columns_ = std::max<size_t>(columns, 2);
    rows_ = std::max<size_t>(rows, 1);
}

size_t Screen::visible(const Frame &frame) const {
    return std::min(frame.row_count(), rows_);
}

// The rows that are seen move no more than the cursor asks for.
size_t Screen::choose_top(const Frame &next) const {
    const size_t last_top = next.row_count() - visible(next);
    const size_t cursor = next.cursor_row();
    size_t top = std::min(top_, last_top);
    top = std::min(top, cursor);
    return std::max(top, cursor + 1 - std::min(cursor + 1, rows_));
}

bool Screen::set_style(const Style &style, Bytes &out) {
    if (style == style_)
        return true;
    style_ = style;
    return add_sequence(style, out);
}

// Down with line feeds, which make new rows at the bottom of a terminal.
bool Screen::move(size_t row, size_t column, Bytes &out) {
    bool done = true;
    if (row < row_)
        done = add_number("\x1b[%zuA", row_ - row, out);
    for (; row_ < row && done; ++row_) {
        done = out.append("\r\n");
        column_ = 0;
    }
    row_ = row;
    if (!done || column == column_)
        return done;
    if (column < column_ || column_ >= columns_) {
        done = out.append("\r");
        column_ = 0;
    }
    if (done && column > column_)
        done = add_number("\x1b[%zuC", column - column_, out);
    column_ = column;
    return done;
}

bool Screen::put_cells(const Frame &frame, const Cell *first, const Cell *last, Bytes &out) {
    for (; first != last; ++first) {
        if (!set_style(first->style, out) || !out.append(frame.text(*first)))
            return false;
        column_ += first->width;
    }
    return true;
}

// From the first cell that differs to the last, when those behind it stand where they stood.
bool Screen::paint_row(const Frame &next, size_t row, size_t top, Bytes &out) {
    static constexpr Frame::Row nothing = {0, 0, 0};
    const bool was_there = !shown_.empty() && row < visible(shown_);
    const Frame::Row &old = was_there ? shown_.row(top_ + row) : nothing;
    const Frame::Row &now = next.row(top + row);
    const Cell *old_first = shown_.cells(old);
    const Cell *old_last = old_first + old.count;
    const Cell *first = next.cells(now);
    const Cell *last = first + now.count;
    size_t column = 0;
    while (old_first != old_last && first != last && same(shown_, *old_first, next, *first)) {
        column += first->width;
        ++first;
        ++old_first;
    }
    if (old.width == now.width)
        while (first != last && old_first != old_last &&
               same(shown_, old_last[-1], next, last[-1])) {
            --last;
            --old_last;
        }
    if (first != last && (!move(row, column, out) || !put_cells(next, first, last, out)))
        return false;
    if (now.width >= old.width)
        return true;
    return move(row, now.width, out) && set_style({}, out) && out.append("\x1b[K");
}

bool Screen::paint(Frame &next, Bytes &out) {
    bool done = true;
    if (lost_)
        done = erase(out);
    const size_t top = choose_top(next);
    const size_t before = shown_.empty() ? 0 : visible(shown_);
    const size_t now = visible(next);
    for (size_t row = 0; row < now && done; ++row)
        done = paint_row(next, row, top, out);
    if (done && before > now)
        done = move(now, 0, out) && set_style({}, out) && out.append("\x1b[J");
    done = done && set_style({}, out) && move(next.cursor_row() - top, next.cursor_column(), out);
    shown_.swap(next);
    top_ = top;
    lost_ = !done;
    return done;
}

bool Screen::erase(Bytes &out) {
    const bool done = move(0, 0, out) && set_style({}, out) && out.append("\x1b[J");
    forget();
    return done;
}

bool Screen::fold(size_t columns, Bytes &out) {
    columns = std::max<size_t>(columns, 1);
    size_t above = std::min(column_, columns_ - 1) / columns;
    for (size_t row = 0; row < row_ && !shown_.empty(); ++row)
        above += std::max<size_t>((shown_.row(top_ + row).width + columns - 1) / columns, 1);
    const bool done = out.append("\r") && (above == 0 || add_number("\x1b[%zuA", above, out)) &&
                      set_style({}, out) && out.append("\x1b[J");
    forget();
    return done;
}

bool Screen::leave(Bytes &out) {
    const size_t last = shown_.empty() ? 0 : visible(shown_) - 1;
    const bool done = move(last, 0, out) && set_style({}, out) && out.append("\r\n");
    forget();
    top_ = 0;
    return done;
}

void Screen::forget() {
    shown_.clear();
    row_ = column_ = 0;
    lost_ = false;
    style_ = {};
}

} // namespace kestu::edit
