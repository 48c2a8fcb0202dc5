// Validation of UTF-8 on every kernel.
#include "base/utf8_valid.hpp"
#include "support/on_kernel.hpp"
#include "support/test.hpp"

using namespace kestu;
using namespace kestu::test;

namespace {

class Utf8OnKernel : public OnKernel<Utf8Kernel, utf8_dispatch> {};
INSTANTIATE_TEST_SUITE_P(Kernels, Utf8OnKernel, testing::ValuesIn(utf8_dispatch.all()),
                         name_of_kernel);

// By decoding, as the standard defines it.
bool is_valid(const std::string &text) {
    for (size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        const size_t size = first < 0x80   ? 1
                            : first < 0xC0 ? 0
                            : first < 0xE0 ? 2
                            : first < 0xF0 ? 3
                            : first < 0xF8 ? 4
                                           : 0;
        if (size == 0 || i + size > text.size())
            return false;
        uint32_t c = size == 1 ? first : first & (0x7FU >> size);
        for (size_t k = 1; k < size; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            c = c << 6 | (next & 0x3F);
        }
        constexpr uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
        if (c < least[size] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000))
            return false;
        i += size;
    }
    return true;
}

TEST_P(Utf8OnKernel, AgreesWithDecodingWhereverTheBytesStand) {
    const auto agree = [](const std::string &text) {
        ASSERT_EQ(kestu_str_utf8_valid(text.data(), text.size()), is_valid(text))
            << testing::PrintToString(text);
    };
    for (const size_t before : {0, 30, 31, 61}) // across the ends of registers
        for (unsigned first = 0x70; first < 0x100; ++first)
            for (unsigned second = 0x70; second < 0x100; ++second) {
                std::string text(before, 'x');
                text += {static_cast<char>(first), static_cast<char>(second)};
                for (const char *rest : {"", "\x80", "\xBF\x80", "x"})
                    agree(text + rest);
            }
    std::mt19937 random(1);
    const std::string pieces[] = {"a",
                                  "some ascii that fills more than one register",
                                  "é",
                                  "€",
                                  "😀",
                                  "\xED\x9F\xBF",
                                  "\xF4\x8F\xBF\xBF"};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (size_t left = random() % 40; left > 0; --left)
            text += pieces[random() % std::size(pieces)];
        agree(text);
        if (!text.empty()) {
            text[random() % text.size()] = static_cast<char>(random());
            agree(text);
            agree(text.substr(0, random() % text.size()));
        }
    }
    EXPECT_TRUE(kestu_str_utf8_valid(nullptr, 0) && kestu_str_utf8_valid("a\0b", 3));
}

} // namespace
