// How characters look.
#pragma once

#include "array.hpp"

#include <cstdint>

namespace kestu::edit {

struct Style {
    enum : uint32_t { indexed = 1u << 24, direct = 2u << 24 };
    enum : uint32_t { bold = 1, dim = 2, italic = 4, underlined = 8, inverse = 16 };

    uint32_t front = 0; // 0, or one of the kinds above with its colour
    uint32_t back = 0;
    uint32_t more = 0;

    bool operator==(const Style &) const = default;
};

// A style of the program: KESTU_EDIT_RED and so on.
Style style_of(uint8_t code);

// Changes `style` as a sequence does: its parameters, without what stands around them.
void apply_sequence(std::string_view parameters, Style &style);

// The sequence that makes this style of any other.
[[nodiscard]] bool add_sequence(const Style &style, Bytes &out);

} // namespace kestu::edit
