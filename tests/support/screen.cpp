#include "support/screen.hpp"

#include <algorithm>
#include <cstdlib>

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
    const bool complete = escape.size() > 2 && escape[1] == '[' && escape.back() >= '@';
    const std::string body = complete ? escape.substr(2, escape.size() - 3) : "";
    const size_t number = body.empty() ? 1 : std::strtoul(body.c_str(), nullptr, 10);
    if (escape == "\x1b[2J") {
        rows.assign(height, std::string(width, ' '));
    } else if (escape == "\x1b[0;0H" || escape == "\x1b[H") {
        row = column = 0;
    } else if (complete && escape.back() == 'A') {
        row -= std::min(row, number);
    } else if (complete && escape.back() == 'C') {
        column = std::min(column + number, width - 1);
    } else if (complete && (escape == "\x1b[J" || escape == "\x1b[K")) {
        rows[row].replace(column, std::string::npos, width - column, ' ');
        if (escape.back() == 'J')
            std::fill(rows.begin() + static_cast<long>(row) + 1, rows.end(),
                      std::string(width, ' '));
    } else if (escape == "\x1b[?7l" || escape == "\x1b[?7h") {
        wraps = escape.back() == 'h';
    } else if (!complete && escape.size() < 10) {
        return;
    } else if (!complete || (escape.back() != 'm' && body != "?2004")) {
        for (const char c : escape)
            put(c);
    }
    escape.clear();
}

} // namespace kestu::test
