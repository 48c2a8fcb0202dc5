#include "style.hpp"

#include "kestu_edit.h"

#include <algorithm>
#include <cstdio>

namespace kestu::edit {
namespace {

constexpr size_t most_parameters = 16;

constexpr struct {
    uint32_t attribute;
    uint32_t number;
} attributes[] = {{Style::bold, 1},
                  {Style::dim, 2},
                  {Style::italic, 3},
                  {Style::underlined, 4},
                  {Style::inverse, 7}};

size_t split(std::string_view text, uint32_t (&numbers)[most_parameters]) {
    size_t count = 1;
    numbers[0] = 0;
    for (const char c : text) {
        if (c >= '0' && c <= '9')
            numbers[count - 1] =
                std::min(numbers[count - 1] * 10 + static_cast<uint32_t>(c - '0'), 9999u);
        else if (count == most_parameters)
            break;
        else
            numbers[count++] = 0;
    }
    return count;
}

// The colour of "38;5;N" or "38;2;R;G;B", from behind the first number; how many it takes.
size_t long_colour(const uint32_t *numbers, size_t count, uint32_t &colour) {
    if (count >= 2 && numbers[0] == 5) {
        colour = Style::indexed | (numbers[1] & 0xFF);
        return 2;
    }
    if (count >= 4 && numbers[0] == 2) {
        colour = Style::direct | (numbers[1] & 0xFF) << 16 | (numbers[2] & 0xFF) << 8 |
                 (numbers[3] & 0xFF);
        return 4;
    }
    return count;
}

void apply(uint32_t number, Style &style) {
    if (number == 0)
        style = {};
    else if (number == 22)
        style.more &= ~(Style::bold | Style::dim);
    else if (number >= 30 && number <= 37)
        style.front = Style::indexed | (number - 30);
    else if (number >= 90 && number <= 97)
        style.front = Style::indexed | (number - 90 + 8);
    else if (number >= 40 && number <= 47)
        style.back = Style::indexed | (number - 40);
    else if (number >= 100 && number <= 107)
        style.back = Style::indexed | (number - 100 + 8);
    else if (number == 39)
        style.front = 0;
    else if (number == 49)
        style.back = 0;
    for (const auto &entry : attributes)
        if (number == entry.number)
            style.more |= entry.attribute;
        else if (number == entry.number + 20 && number > 22)
            style.more &= ~entry.attribute;
}

int write_colour(char *out, size_t room, uint32_t colour, unsigned base) {
    if (colour == 0)
        return 0;
    if ((colour & Style::direct) != 0)
        return std::snprintf(out, room, ";%u;2;%u;%u;%u", base + 8, colour >> 16 & 0xFF,
                             colour >> 8 & 0xFF, colour & 0xFF);
    const unsigned index = colour & 0xFF;
    if (index < 8)
        return std::snprintf(out, room, ";%u", base + index);
    return std::snprintf(out, room, ";%u;5;%u", base + 8, index);
}

} // namespace

Style style_of(uint8_t code) {
    Style style;
    if (const unsigned colour = code & 7; colour != 0)
        style.front = Style::indexed | colour;
    style.more = (code & KESTU_EDIT_BOLD ? Style::bold : 0u) |
                 (code & KESTU_EDIT_DIM ? Style::dim : 0u) |
                 (code & KESTU_EDIT_UNDERLINED ? Style::underlined : 0u) |
                 (code & KESTU_EDIT_INVERSE ? Style::inverse : 0u);
    return style;
}

void apply_sequence(std::string_view parameters, Style &style) {
    uint32_t numbers[most_parameters];
    const size_t count = split(parameters, numbers);
    for (size_t i = 0; i < count; ++i)
        if (numbers[i] == 38)
            i += long_colour(numbers + i + 1, count - i - 1, style.front);
        else if (numbers[i] == 48)
            i += long_colour(numbers + i + 1, count - i - 1, style.back);
        else
            apply(numbers[i], style);
}

bool add_sequence(const Style &style, Bytes &out) {
    char text[80] = "\x1b[0";
    size_t length = 3;
    const auto add = [&](int added) { length += static_cast<size_t>(added); };
    for (const auto &entry : attributes)
        if (style.more & entry.attribute)
            add(std::snprintf(text + length, sizeof text - length, ";%u", entry.number));
    add(write_colour(text + length, sizeof text - length, style.front, 30));
    add(write_colour(text + length, sizeof text - length, style.back, 40));
    text[length++] = 'm';
    return out.append({text, length});
}

} // namespace kestu::edit
