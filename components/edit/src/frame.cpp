#include "frame.hpp"

#include "clusters.hpp"

#include <algorithm>

namespace kestu::edit {
namespace {

constexpr size_t tab_width = 8;

// The end of the sequence that begins at `at` with an escape; what stands for it is parameters of
// colours or nothing.
size_t end_of_sequence(std::string_view text, size_t at, std::string_view &colours) {
    colours = {};
    const char kind = at + 1 < text.size() ? text[at + 1] : '\0';
    size_t end = at + 2;
    if (kind == '[') {
        while (end < text.size() && (text[end] < '@' || text[end] > '~'))
            ++end;
        if (end < text.size() && text[end] == 'm')
            colours = part(text, at + 2, end - at - 2);
        if (colours.data() && colours.empty())
            colours = "0";
        return std::min(end + 1, text.size());
    }
    if (kind == ']') { // to a bell or "\x1b\\"
        while (end < text.size() && text[end] != '\a' && text[end - 1] != '\x1b')
            ++end;
        return std::min(end + 1, text.size());
    }
    return std::min(end, text.size());
}

bool is_plain(std::string_view text, size_t at) {
    return text[at] >= ' ' && text[at] != 0x7F &&
           (at + 1 == text.size() || static_cast<unsigned char>(text[at + 1]) < 0x80);
}

} // namespace

void Frame::begin(size_t columns) {
    clear();
    columns_ = columns;
    whole_ = rows_.push({0, 0, 0});
}

void Frame::clear() {
    bytes_.clear();
    cells_.clear();
    rows_.clear();
    cursor_row_ = cursor_column_ = 0;
}

void Frame::swap(Frame &other) {
    bytes_.swap(other.bytes_);
    cells_.swap(other.cells_);
    rows_.swap(other.rows_);
    std::swap(columns_, other.columns_);
    std::swap(cursor_row_, other.cursor_row_);
    std::swap(cursor_column_, other.cursor_column_);
    std::swap(whole_, other.whole_);
}

void Frame::end_row() {
    whole_ = whole_ && rows_.push({cells_.size(), 0, 0});
}

// Offsets of cells have 32 bits; nobody sees what is beyond.
void Frame::put(std::string_view bytes, size_t width, const Style &style) {
    if (!whole_ || bytes_.size() + bytes.size() > UINT32_MAX)
        return;
    if (columns_ > 0 && rows_.back().width + width > columns_)
        end_row();
    const Cell cell = {static_cast<uint32_t>(bytes_.size()), static_cast<uint16_t>(bytes.size()),
                       static_cast<uint16_t>(width), style};
    whole_ = whole_ && bytes_.append(bytes) && cells_.push(cell);
    if (!whole_)
        return;
    ++rows_.back().count;
    rows_.back().width += width;
}

void Frame::put_blanks(size_t count, const Style &style) {
    for (size_t i = 0; i < count; ++i)
        put(" ", 1, style);
}

// Returns how many bytes it took.
size_t Frame::add_cluster(std::string_view text, size_t at, const Style &style) {
    const Cluster cluster = cluster_at(text, at);
    const bool many_rows = columns_ > 0;
    char spelled[16];
    if (cluster.kind == Cluster::shown) {
        put(part(text, at, cluster.length), cluster.width, style);
    } else if (cluster.kind == Cluster::row_end && many_rows) {
        end_row();
    } else if (cluster.kind == Cluster::tab && many_rows) {
        const size_t column = rows_.back().width;
        put_blanks(std::min(tab_width - column % tab_width,
                            std::max<size_t>(columns_ - std::min(column, columns_), 1)),
                   style);
    } else {
        const size_t length = words(part(text, at, cluster.length), spelled);
        for (size_t i = 0; i < length; ++i)
            put({spelled + i, 1}, 1, style);
    }
    return cluster.length;
}

// Most text is of characters of one byte and one column, for which there is room then.
size_t Frame::add_plain(std::string_view text, const Style &style, const uint8_t *styles) {
    const bool room = whole_ && bytes_.size() + text.size() <= UINT32_MAX &&
                      bytes_.reserve(bytes_.size() + text.size()) &&
                      cells_.reserve(cells_.size() + text.size());
    size_t at = 0;
    for (; room && at < text.size() && is_plain(text, at); ++at) {
        if (columns_ > 0 && rows_.back().width == columns_)
            end_row();
        if (!whole_)
            break;
        const Style look = styles ? style_of(styles[at]) : style;
        const Cell cell = {static_cast<uint32_t>(bytes_.size()), 1, 1, look};
        bytes_.add(text[at]);
        cells_.add(cell);
        Row &row = rows_.back();
        ++row.count;
        ++row.width;
    }
    return at;
}

void Frame::add(std::string_view text, const Style &style, const uint8_t *styles) {
    for (size_t at = 0; at < text.size() && whole_;) {
        const size_t plain = add_plain(part(text, at), style, styles ? styles + at : nullptr);
        at += plain;
        if (plain > 0)
            continue;
        at += add_cluster(text, at, styles ? style_of(styles[at]) : style);
    }
}

void Frame::add_prompt(std::string_view prompt) {
    Style style;
    for (size_t at = 0; at < prompt.size() && whole_;)
        if (prompt[at] == '\x1b') {
            std::string_view colours;
            at = end_of_sequence(prompt, at, colours);
            if (!colours.empty())
                apply_sequence(colours, style);
        } else {
            at += add_cluster(prompt, at, style);
        }
}

// Behind the last column the cursor stands in the next row, unless that is another one of the text.
void Frame::mark_cursor(bool row_ends) {
    const bool full = columns_ > 0 && whole_ && rows_.back().width >= columns_;
    if (full && !row_ends)
        end_row();
    if (!whole_)
        return;
    cursor_row_ = rows_.size() - 1;
    cursor_column_ = rows_.back().width - (full && row_ends ? 1 : 0);
}

void Frame::cut(size_t left, size_t columns) {
    Row &row = rows_.back();
    size_t first = 0;
    size_t column = 0;
    while (first < row.count && column < left)
        column += cells_[row.first + first++].width;
    const size_t begin = column;
    size_t count = 0;
    while (first + count < row.count &&
           column + cells_[row.first + first + count].width <= begin + columns)
        column += cells_[row.first + first + count++].width;
    cells_.cut(row.first + first + count);
    cells_.erase(row.first, first);
    row.count = count;
    row.width = column - begin;
    cursor_column_ -= std::min(cursor_column_, begin);
}

} // namespace kestu::edit
