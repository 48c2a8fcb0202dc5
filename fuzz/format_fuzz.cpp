// The formatting engine. The first byte of an input chooses what it is:
// even: the size of a buffer, then a format of any bytes, printed whole and into that buffer;
// odd: single conversions with their arguments, compared with what the C library prints.
#include "fuzz/format_model.hpp"

#include <memory>

using namespace kestu::fuzz;

namespace {

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input(data, size);
    if (input.byte() % 2 == 0) {
        print_any_format(input);
        return 0;
    }
    while (!input.empty())
        compare_any(input);
    return 0;
}
