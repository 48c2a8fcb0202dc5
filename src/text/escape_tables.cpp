// The classes of bytes, and code page 437.
#include "kestu_escape.h"

#include <string_view>

namespace {

constexpr bool within(unsigned byte, unsigned first, unsigned last) {
    return byte >= first && byte <= last;
}

constexpr bool is_one_of(std::string_view set, unsigned byte) {
    return byte < 0x80 && set.find(static_cast<char>(byte)) != set.npos;
}

constexpr uint32_t classes_of(unsigned byte) {
    using namespace std::literals;
    uint32_t classes = 0;
    if (within(byte, 'A', 'Z') || within(byte, 'a', 'z') || byte == '_' || within(byte, 128, 154) ||
        within(byte, 160, 167))
        classes |= KESTU_CHAR_LETTER;
    if (within(byte, '0', '9'))
        classes |= KESTU_CHAR_DIGIT;
    if (within(byte, 'A', 'F') || within(byte, 'a', 'f'))
        classes |= KESTU_CHAR_HEX_LETTER;
    if (is_one_of("\0\n\\?"sv, byte))
        classes |= KESTU_CHAR_SPECIAL;
    if (is_one_of("\"'(),.;[]{}~?", byte))
        classes |= KESTU_CHAR_BRACKET;
    if (is_one_of("!#%&*+-/:<=>^|", byte))
        classes |= KESTU_CHAR_PUNCTUATION;
    if (is_one_of("\t\v\f\r ", byte))
        classes |= KESTU_CHAR_SPACE;
    return classes;
}

// Its last character is the no-break space.
constexpr std::u16string_view upper_half = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
                                           u"áíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                           u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                           u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■"
                                           u"\u00A0";
static_assert(upper_half.size() == 128);

constexpr uint16_t code_point_of(unsigned byte) {
    return byte < 128 ? static_cast<uint16_t>(byte) : upper_half[byte - 128];
}

} // namespace

#define FOUR(f, n) f(n), f((n) + 1), f((n) + 2), f((n) + 3)
#define SIXTEEN(f, n) FOUR(f, n), FOUR(f, (n) + 4), FOUR(f, (n) + 8), FOUR(f, (n) + 12)
#define SIXTY_FOUR(f, n)                                                                           \
    SIXTEEN(f, n), SIXTEEN(f, (n) + 16), SIXTEEN(f, (n) + 32), SIXTEEN(f, (n) + 48)
#define EVERY_BYTE(f) SIXTY_FOUR(f, 0), SIXTY_FOUR(f, 64), SIXTY_FOUR(f, 128), SIXTY_FOUR(f, 192)

constinit uint32_t CharSet[257] = {EVERY_BYTE(classes_of), 0};
const uint16_t UniCode[256] = {EVERY_BYTE(code_point_of)};
