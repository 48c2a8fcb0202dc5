// The formatting engine. The first byte of an input chooses what it is:
// even: the size of a buffer, then a format of any bytes, printed whole and into that buffer;
// odd: single conversions with their arguments, compared with what the C library prints.
#include "kestu_format.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

void expect(bool held, const std::string &format, const char *ours = "", const char *theirs = "") {
    if (held)
        return;
    std::fprintf(stderr, "format <%s>: <%s> instead of <%s>\n", format.c_str(), ours, theirs);
    std::abort();
}

class Input {
  public:
    Input(const uint8_t *data, size_t size) : at_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    uint8_t byte() { return take<uint8_t>(); }
    std::string rest() const { return {reinterpret_cast<const char *>(at_), left_}; }

    // Missing bytes are zero.
    template <typename T>
    T take() {
        T value{};
        const size_t size = std::min(sizeof value, left_);
        std::memcpy(&value, at_, size);
        at_ += size;
        left_ -= size;
        return value;
    }

  private:
    const uint8_t *at_;
    size_t left_;
};

// Every argument is valid as what any conversion takes: as text, as a wide text and as a place for
// a length; those that are fetched as doubles come from registers first.
int print(char *out, size_t size, const std::string &format) {
    alignas(16) static char target[32];
    std::memset(target, 0, sizeof target);
    std::strcpy(target, "text");
    char *p = target;
    return rpl_snprintf(out, size, format.c_str(), p, p, p, 0.1, -1e300, 2.5, 1e-308, INFINITY,
                        1e15, 999999.5, -0.0, p, p, p, p, p, p, p, p, p, p, p, p, p, p, p, p, p, p,
                        p, p, p, p, p, p);
}

void print_any_format(Input input) {
    const size_t size = input.take<uint16_t>() % 300;
    std::string format = input.rest();
    constexpr long most_conversions = 24;
    if (std::count(format.begin(), format.end(), '%') > most_conversions)
        return;
    std::replace(format.begin(), format.end(), '*', '1'); // widths would be parts of addresses

    static char whole[1 << 16];
    const int length = print(whole, sizeof whole, format);
    const size_t stored =
        std::min(length < 0 ? sizeof whole : static_cast<size_t>(length), sizeof whole - 1);
    expect(print(nullptr, 0, format) == length, format);
    const auto exact = std::make_unique<char[]>(size);
    expect(print(exact.get(), size, format) == length, format);
    if (length >= 0)
        expect(whole[stored] == '\0', format);
    if (size == 0)
        return;
    const size_t shared = length < 0 ? std::strlen(exact.get()) : std::min(size - 1, stored);
    expect(std::memcmp(exact.get(), whole, shared) == 0 && exact[shared] == '\0', format,
           exact.get(), whole);
}

// A conversion without its character: flags, and width and precision as numbers or as arguments.
struct Layout {
    std::string text = "<%";
    int stars = 0;
    int star[2] = {0, 0};
    int precision = -1;

    Layout(Input &input, const char *allowed_flags, int most_places) {
        const uint8_t flags = input.byte();
        for (int i = 0; allowed_flags[i]; ++i)
            if (flags >> i & 1)
                text += allowed_flags[i];
        if (flags & 0x40)
            add(input.byte() % 100, input.byte() % 4 == 0, flags & 0x20);
        if (flags & 0x80 && most_places >= 0) {
            text += '.';
            precision = input.byte() % (most_places + 1);
            add(precision, input.byte() % 4 == 0, false);
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

void compare_integer(Input &input) {
    constexpr const char *sizes[] = {"", "h", "hh", "l", "ll", "j", "t", "z"};
    const Layout layout(input, "-+ #0", 100);
    const uint8_t kind = input.byte();
    const std::string conversion = std::string(sizes[kind % 8]) + "dioxXu"[kind / 8 % 6];
    const auto value = input.take<int64_t>();
    if (kind % 8 < 3)
        compare(layout, conversion, static_cast<int>(value));
    else
        compare(layout, conversion, value);
}

void compare_string(Input &input) {
    const Layout layout(input, "-", 40);
    std::string text;
    for (size_t length = input.byte() % 40; length > 0; --length)
        text += static_cast<char>(input.byte());
    compare(layout, "s", text.c_str());
}

void compare_pointer(Input &input) {
    compare(Layout(input, "-", -1), "p", reinterpret_cast<void *>(input.take<uintptr_t>()));
}

// Left out: more places than are given, values that have no room, exponents that are not given, and
// "%#g", where some versions of the C library lose zeros.
void compare_float(Input &input) {
    const uint8_t kind = input.byte();
    const char conversion = "feg"[kind % 3];
    const Layout layout(input, conversion == 'g' ? "-+ 0" : "-+ 0#", conversion == 'g' ? 15 : 19);
    auto value = input.take<double>();
    if (kind & 0x40)
        value = std::ldexp(static_cast<double>(input.take<uint32_t>()), kind % 64 - 40);
    if (kind & 0x80)
        value = static_cast<double>(input.take<int64_t>()) / 1000;
    const double magnitude = std::abs(value);
    const bool too_large = conversion == 'f' && std::isfinite(value) && magnitude >= 0x1p64;
    const bool too_small = conversion != 'f' && magnitude > 0 && magnitude < 1e-308;
    if (!too_large && !too_small)
        compare(layout, std::string(1, conversion), value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input(data, size);
    if (input.byte() % 2 == 0) {
        print_any_format(input);
        return 0;
    }
    while (!input.empty()) {
        switch (input.byte() % 8) {
        case 0:
            compare_string(input);
            break;
        case 1:
            compare_pointer(input);
            break;
        case 2:
        case 3:
        case 4:
            compare_integer(input);
            break;
        default:
            compare_float(input);
            break;
        }
    }
    return 0;
}
