// Boxes drawn with characters.
#pragma once

#include <string>
#include <vector>

namespace program {

// Lines that all take `width` columns.
struct Block {
    size_t width = 0;
    std::vector<std::string> lines;
};

class Boxes {
  public:
    // With the box-drawing characters of Unicode, or with those of ASCII.
    explicit Boxes(bool unicode);

    // A box around the headings (of ASCII characters) and, below them, the content.
    Block framed(const std::vector<std::string> &headings, const Block &content) const;

    // The blocks from left to right, in as many rows as `width` columns need.
    Block beside(const std::vector<Block> &blocks, size_t width) const;

  private:
    std::string edge(const char *left, size_t width, const char *right) const;
    // A line of `columns` between the sides of a box for lines of `width`.
    std::string inner(const std::string &line, size_t columns, size_t width) const;

    const char *horizontal_;
    const char *vertical_;
    const char *corners_[4];
};

std::string to_text(const Block &block);

} // namespace program
