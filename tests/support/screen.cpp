#include "support/screen.hpp"

#include <algorithm>
#include <cstdlib>

namespace kestu::test {

Screen::Screen(int columns, int lines)
    : width_(static_cast<size_t>(columns)), height_(static_cast<size_t>(lines)),
      rows_(height_, std::string(width_, ' ')) {}

void Screen::write(std::string_view bytes) {
    for (const char c : bytes)
        if (!escape_.empty() || c == '\x1b') {
            escape_ += c;
            sequence();
        } else if (!control(c)) {
            put(c);
        }
}

void Screen::resize(int columns, int lines) {
    width_ = static_cast<size_t>(columns);
    height_ = static_cast<size_t>(lines);
    rows_.resize(height_);
    for (std::string &text : rows_)
        text.resize(width_, ' ');
    row_ = std::min(row_, height_ - 1);
    column_ = std::min(column_, width_);
}

std::string Screen::shown() const {
    std::string all;
    size_t used = 0;
    for (size_t i = 0; i < height_; ++i) {
        std::string text = rows_[i];
        if (i == row_)
            text.insert(column_, 1, '|');
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
        column_ = 0;
        return true;
    case '\n':
        next_row();
        return true;
    default:
        return false;
    }
}

void Screen::put(char c) {
    if (column_ == width_ && !wraps_) {
        --column_;
    } else if (column_ == width_) {
        column_ = 0;
        next_row();
    }
    rows_[row_][column_++] = c;
}

void Screen::next_row() {
    if (row_ + 1 < height_) {
        ++row_;
        return;
    }
    rows_.erase(rows_.begin());
    rows_.emplace_back(width_, ' ');
}

void Screen::sequence() {
    const bool complete = escape_.size() > 2 && escape_[1] == '[' && escape_.back() >= '@';
    const std::string body = complete ? escape_.substr(2, escape_.size() - 3) : "";
    const size_t number = body.empty() ? 1 : std::strtoul(body.c_str(), nullptr, 10);
    if (escape_ == "\x1b[2J") {
        rows_.assign(height_, std::string(width_, ' '));
    } else if (escape_ == "\x1b[0;0H" || escape_ == "\x1b[H") {
        row_ = column_ = 0;
    } else if (complete && escape_.back() == 'A') {
        row_ -= std::min(row_, number);
    } else if (complete && escape_.back() == 'C') {
        column_ = std::min(column_ + number, width_ - 1);
    } else if (complete && (escape_ == "\x1b[J" || escape_ == "\x1b[K")) {
        rows_[row_].replace(column_, std::string::npos, width_ - column_, ' ');
        if (escape_.back() == 'J')
            std::fill(rows_.begin() + static_cast<long>(row_) + 1, rows_.end(),
                      std::string(width_, ' '));
    } else if (escape_ == "\x1b[?7l" || escape_ == "\x1b[?7h") {
        wraps_ = escape_.back() == 'h';
    } else if (!complete && escape_.size() < 10) {
        return;
    } else if (!complete || (escape_.back() != 'm' && body != "?2004")) {
        for (const char c : escape_)
            put(c);
    }
    escape_.clear();
}

} // namespace kestu::test
