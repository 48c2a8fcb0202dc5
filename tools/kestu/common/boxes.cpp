#include "common/boxes.hpp"

#include <algorithm>

namespace program {
namespace {

std::string padded(std::string line, size_t columns, size_t width) {
    return line.append(width - columns, ' ');
}

// Puts a block to the right of what is there, and makes the shorter of both as high.
void append(Block &row, const Block &block) {
    const size_t gap = row.width > 0 ? 1 : 0;
    const size_t height = std::max(row.lines.size(), block.lines.size());
    row.lines.resize(height, std::string(row.width, ' '));
    for (size_t i = 0; i < height; ++i)
        row.lines[i] += std::string(gap, ' ') +
                        (i < block.lines.size() ? block.lines[i] : std::string(block.width, ' '));
    row.width += gap + block.width;
}

// Puts a row below what is there, and makes the narrower of both as wide.
void stack(Block &page, const Block &row) {
    const size_t width = std::max(page.width, row.width);
    for (std::string &line : page.lines)
        line = padded(std::move(line), page.width, width);
    for (const std::string &line : row.lines)
        page.lines.push_back(padded(line, row.width, width));
    page.width = width;
}

} // namespace

Boxes::Boxes(bool unicode)
    : horizontal_(unicode ? "─" : "-"),
      vertical_(unicode ? "│" : "|"), corners_{"+", "+", "+", "+"} {
    constexpr const char *drawn[] = {"┌", "┐", "└", "┘"};
    if (unicode)
        std::copy(std::begin(drawn), std::end(drawn), corners_);
}

std::string Boxes::edge(const char *left, size_t width, const char *right) const {
    std::string line = left;
    for (size_t i = 0; i < width; ++i)
        line += horizontal_;
    return line + right;
}

std::string Boxes::inner(const std::string &line, size_t columns, size_t width) const {
    std::string framed = vertical_;
    framed += ' ';
    framed += padded(line, columns, width);
    framed += ' ';
    return framed += vertical_;
}

Block Boxes::framed(const std::vector<std::string> &headings, const Block &content) const {
    size_t width = content.width;
    for (const std::string &heading : headings)
        width = std::max(width, heading.size());
    Block box = {.width = width + 4, .lines = {edge(corners_[0], width + 2, corners_[1])}};
    for (const std::string &heading : headings)
        box.lines.push_back(inner(heading, heading.size(), width));
    for (const std::string &line : content.lines)
        box.lines.push_back(inner(line, content.width, width));
    box.lines.push_back(edge(corners_[2], width + 2, corners_[3]));
    return box;
}

Block Boxes::beside(const std::vector<Block> &blocks, size_t width) const {
    Block page;
    Block row;
    for (const Block &block : blocks) {
        if (row.width > 0 && row.width + 1 + block.width > width) {
            stack(page, row);
            row = {};
        }
        append(row, block);
    }
    stack(page, row);
    return page;
}

std::string to_text(const Block &block) {
    std::string text;
    for (const std::string &line : block.lines)
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    return text;
}

} // namespace program
