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

// An array that a function may return. In memory it is the array of the header.
template <typename Entry, size_t size>
struct Table {
    Entry entries[size];
};

// An entry for every byte, and zeros behind.
template <typename Entry, size_t size>
constexpr Table<Entry, size> table_of(Entry (*entry_of)(unsigned byte)) {
    Table<Entry, size> table = {};
    for (unsigned byte = 0; byte < 256; ++byte)
        table.entries[byte] = entry_of(byte);
    return table;
}

} // namespace

extern "C" {
extern KESTU_API Table<uint32_t, 257> char_set asm("CharSet");
extern KESTU_API const Table<uint16_t, 256> uni_code asm("UniCode");
}

constinit Table<uint32_t, 257> char_set = table_of<uint32_t, 257>(classes_of);
constinit const Table<uint16_t, 256> uni_code = table_of<uint16_t, 256>(code_point_of);
