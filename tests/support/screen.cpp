#include "support/screen.hpp"

#include <algorithm>

namespace kestu::test {

Screen::Screen(int columns, int lines)
    : width(static_cast<size_t>(columns)), height(static_cast<size_t>(lines)),
      rows(height, std::string(width, ' ')) {}

void Screen::write(std::string_view bytes) {
    for (const char c : bytes)
        if (!escape.empty() || c == '\x1b') {
            escape += c;
            sequence();
        } else if (!control(c)) {
            put(c);
        }
}

void Screen::resize(int columns, int lines) {
    width = static_cast<size_t>(columns);
    height = static_cast<size_t>(lines);
    rows.resize(height);
    for (std::string &text : rows)
        text.resize(width, ' ');
    row = std::min(row, height - 1);
    column = std::min(column, width);
}

std::string Screen::shown() const {
    std::string all;
    size_t used = 0;
    for (size_t i = 0; i < height; ++i) {
        std::string text = rows[i];
        if (i == row)
            text.insert(column, 1, '|');
        text.erase(text.find_last_not_of(' ') + 1);
        all += text;
        if (!text.empty())
            used = all.size();
        all += '\n';
    }
    all.resize(used);
    return all;
}

bool Screen::control(char c) {
    switch (c) {
    case '\r':
        column = 0;
        return true;
    case '\n':
        next_row();
        return true;
    default:
        return false;
    }
}

void Screen::put(char c) {
    if (column == width && !wraps) {
        --column;
    } else if (column == width) {
        column = 0;
        next_row();
    }
    rows[row][column++] = c;
}

void Screen::next_row() {
    if (row + 1 < height) {
        ++row;
        return;
    }
    rows.erase(rows.begin());
    rows.emplace_back(width, ' ');
}

void Screen::sequence() {
    if (escape == "\x1b[2J")
        rows.assign(height, std::string(width, ' '));
    else if (escape == "\x1b[0;0H")
        row = column = 0;
    else if (escape == "\x1b[A")
        row -= row > 0;
    else if (escape == "\x1b[?7l" || escape == "\x1b[?7h")
        wraps = escape.back() == 'h';
    else if (escape.size() < 7 && escape.back() != 'm')
        return;
    else if (escape.back() != 'm') // which only changes colours
        for (const char c : escape)
            put(c);
    escape.clear();
}

} // namespace kestu::test
