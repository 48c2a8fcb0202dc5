// How wide a text is.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace kestu::test {

inline std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// How many characters a line shows: bytes that do not continue a UTF-8 character.
inline size_t columns_of(const std::string &line) {
    return static_cast<size_t>(
        std::count_if(line.begin(), line.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// Expects that no line is wider, and that all is ASCII or not.
inline void expect_columns(const std::string &text, size_t width, bool ascii) {
    for (const std::string &line : lines_of(text))
        EXPECT_LE(columns_of(line), width) << line;
    EXPECT_EQ(std::all_of(text.begin(), text.end(), [](char c) { return c > 0; }), ascii);
}

} // namespace kestu::test
