// Single conversions with arguments of any value, beside what the C library prints of them.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_format.h"

#include <cmath>
#include <cstdio>

namespace kestu::fuzz {

inline void expect(bool held, const std::string &format, const char *ours = "",
                   const char *theirs = "") {
    if (held)
        return;
    std::fprintf(stderr, "format <%s>: <%s> instead of <%s>\n", format.c_str(), ours, theirs);
    std::abort();
}

// A conversion without its character: flags, and width and precision as numbers or as arguments.
struct Layout {
    std::string text = "<%";
    int stars = 0;
    int star[2] = {0, 0};

    Layout(Input &input, const char *allowed_flags, int most_places) {
        const uint8_t flags = input.byte();
        for (int i = 0; allowed_flags[i]; ++i)
            if (flags >> i & 1)
                text += allowed_flags[i];
        if (flags & 0x40)
            add(input.byte() % 100, input.byte() % 4 == 0, flags & 0x20);
        if (flags & 0x80 && most_places >= 0) {
            text += '.';
            const int places = input.byte() % (most_places + 1);
            add(places, input.byte() % 4 == 0, false);
        }
    }

    void add(int number, bool as_argument, bool negative) {
        text += as_argument ? "*" : std::to_string(number);
        if (as_argument)
            star[stars++] = negative ? -number : number;
    }
};

template <typename Value>
void compare(const Layout &layout, const std::string &conversion, Value value) {
    const std::string format = layout.text + conversion + ">";
    char ours[1000];
    char theirs[1000];
    int our_length = 0;
    int their_length = 0;
    const auto print_both = [&](auto... stars) {
        our_length = rpl_snprintf(ours, sizeof ours, format.c_str(), stars..., value);
        their_length = std::snprintf(theirs, sizeof theirs, format.c_str(), stars..., value);
    };
    if (layout.stars == 0)
        print_both();
    else if (layout.stars == 1)
        print_both(layout.star[0]);
    else
        print_both(layout.star[0], layout.star[1]);
    expect(our_length == their_length && std::strcmp(ours, theirs) == 0, format, ours, theirs);
}

// Of any length, and one below the powers of ten, where their number of digits changes.
inline void compare_integer(Input &input) {
    constexpr const char *sizes[] = {"", "h", "hh", "l", "ll", "j", "t", "z"};
    const Layout layout(input, "-+ #0", 100);
    const uint8_t kind = input.byte();
    const std::string conversion = std::string(sizes[kind % 8]) + "dioxXu"[kind / 8 % 6];
    auto value = input.take<int64_t>() >> kind / 48 * 12;
    if (kind / 48 == 3)
        value = std::llround(std::pow(10, static_cast<double>(value & 15))) - (value >> 4 & 1);
    if (kind % 8 < 3)
        compare(layout, conversion, static_cast<int>(value));
    else
        compare(layout, conversion, value);
}

inline void compare_string(Input &input) {
    const Layout layout(input, "-", 40);
    std::string text;
    for (size_t length = input.byte() % 40; length > 0; --length)
        text += static_cast<char>(input.byte());
    compare(layout, "s", text.c_str());
}

inline void compare_pointer(Input &input) {
    compare(Layout(input, "-", -1), "p", reinterpret_cast<void *>(input.take<uintptr_t>()));
}

// Of any bits, on and near ties of binary and of decimal places, short decimals, and large tens.
inline double any_double(Input &input, uint8_t kind) {
    const int step = kind % 64;
    const double tens = std::pow(10, step % 23);
    switch (kind >> 6) {
    case 0:
        return input.take<double>();
    case 1:
        return std::ldexp(static_cast<double>(input.take<uint32_t>()), step - 40);
    case 2:
        return static_cast<double>(input.take<int64_t>() >> step) / tens;
    default:
        return static_cast<double>(input.take<int64_t>() >> step) * tens;
    }
}

// Left out: more places than are given, values that have no room, exponents that are not given, and
// "%#g", where some versions of the C library lose zeros.
inline void compare_float(Input &input) {
    const uint8_t kind = input.byte();
    const char conversion = "feg"[kind % 3];
    const Layout layout(input, conversion == 'g' ? "-+ 0" : "-+ 0#", conversion == 'g' ? 15 : 19);
    const double value = any_double(input, kind);
    const double magnitude = std::abs(value);
    const bool too_large = conversion == 'f' && std::isfinite(value) && magnitude >= 0x1p64;
    const bool too_small = conversion != 'f' && magnitude > 0 && magnitude < 1e-308;
    if (!too_large && !too_small)
        compare(layout, std::string(1, conversion), value);
}

inline void compare_any(Input &input) {
    const int choice = input.byte() % 8;
    if (choice == 0)
        compare_string(input);
    else if (choice == 1)
        compare_pointer(input);
    else if (choice < 5)
        compare_integer(input);
    else
        compare_float(input);
}

} // namespace kestu::fuzz
