#include "paper.hpp"

#include <algorithm>

#include <utf8proc.h>

namespace kestu::test {
namespace {

struct Character {
    size_t length, width;
};

// By the library that knows Unicode; flags and emoji take two columns.
Character character_at(std::string_view text) {
    Character found{0, 0};
    utf8proc_int32_t before = 0, state = 0, code = 0;
    while (found.length < text.size()) {
        const auto length =
            utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t *>(text.data() + found.length),
                             static_cast<utf8proc_ssize_t>(text.size() - found.length), &code);
        if (length <= 0)
            return found.length > 0 ? found : Character{1, 1};
        if (found.length > 0 && utf8proc_grapheme_break_stateful(before, code, &state))
            break;
        const auto is_flag = [](utf8proc_int32_t c) { return c >= 0x1F1E6 && c <= 0x1F1FF; };
        const bool pair = is_flag(before) && is_flag(code);
        const int width = code == 0xFE0F || pair ? 2 : utf8proc_charwidth(code);
        found.width = std::max(found.width, static_cast<size_t>(std::max(width, 0)));
        found.length += static_cast<size_t>(length);
        before = code;
    }
    return found;
}

// What stands in a cell, without the style in front of it.
std::string_view unstyled(std::string_view cell) {
    return cell.starts_with('\x1b') ? cell.substr(cell.find('m') + 1) : cell;
}

bool is_wide(std::string_view cell) {
    return character_at(unstyled(cell)).width == 2;
}

} // namespace

void Paper::feed() {
    if (row_ + 1 < rows_.size()) {
        ++row_;
        return;
    }
    rows_.erase(rows_.begin());
    rows_.emplace_back(columns_);
}

void Paper::put(std::string_view text) {
    while (!text.empty()) {
        const auto [length, width] = character_at(text);
        if (column_ + width > columns_) {
            column_ = 0;
            feed();
        }
        // A half of a character that is written over goes with it.
        if (column_ > 0 && is_wide(rows_[row_][column_ - 1]))
            rows_[row_][column_ - 1].clear();
        rows_[row_][column_] = style_ + std::string(text.substr(0, length));
        if (width == 2)
            rows_[row_][column_ + 1] = "";
        column_ += width;
        text.remove_prefix(length);
    }
}

void Paper::sequence(std::string_view text) {
    const std::string body(text.substr(2, text.size() - 3));
    const size_t number = body.empty() || !isdigit(body[0]) ? 1 : std::stoul(body);
    switch (text.back()) {
    case 'A':
        row_ -= std::min(row_, number);
        break;
    case 'C':
        column_ = std::min(column_ + number, columns_ - 1);
        break;
    case 'H':
        row_ = column_ = 0;
        break;
    case 'K':
        std::fill(rows_[row_].begin() + static_cast<long>(column_), rows_[row_].end(), "");
        break;
    case 'J':
        if (body == "2")
            std::fill(rows_.begin(), rows_.end(), Row(columns_));
        std::fill(rows_[row_].begin() + static_cast<long>(column_), rows_[row_].end(), "");
        std::fill(rows_.begin() + static_cast<long>(row_) + 1, rows_.end(), Row(columns_));
        break;
    case 'm':
        style_ = body == "0" ? "" : "\x1b[" + body + "m";
        break;
    default:
        unknown = text;
    }
}

void Paper::write(std::string_view bytes) {
    while (!bytes.empty()) {
        size_t end = bytes.find_first_of("\x1b\r\n");
        end = std::min(end, bytes.size());
        put(bytes.substr(0, end));
        bytes.remove_prefix(end);
        if (bytes.empty())
            return;
        size_t length = 1;
        if (bytes[0] == '\r')
            column_ = 0;
        else if (bytes[0] == '\n')
            feed();
        else
            sequence(bytes.substr(0, length = bytes.find_first_of("ACHKJm", 2) + 1));
        bytes.remove_prefix(length);
    }
}

std::string Paper::shown(size_t first, bool styles) const {
    std::string all;
    size_t used = 0;
    for (size_t row = first; row < rows_.size(); ++row) {
        std::string text;
        for (size_t column = 0; column <= columns_; ++column) {
            if (row == row_ && column == column_)
                text += '|';
            if (column == columns_)
                break;
            const std::string &cell = rows_[row][column];
            const bool is_second_half =
                cell.empty() && column > 0 && is_wide(rows_[row][column - 1]);
            if (cell.empty())
                text += is_second_half ? "" : " ";
            else
                text += styles ? std::string_view(cell) : unstyled(cell);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        all += text;
        if (!text.empty())
            used = all.size();
        all += '\n';
    }
    all.resize(used);
    return all;
}

} // namespace kestu::test
