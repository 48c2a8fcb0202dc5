// Escapes to bytes and bytes to escapes. Measuring and writing are one walk over the input.
#include "kestu_escape.h"

#include "base/sink.hpp"
#include "error/error.hpp"

#include <cctype>
#include <cstdint>
#include <string_view>

using namespace kestu;

namespace {

// The letters of the bytes 7 to 13.
constexpr std::string_view letters = "abtnvfr";
constexpr unsigned char first_letter_value = 7;

bool has_class(unsigned char byte, uint32_t classes) {
    return (CharSet[byte] & classes) != 0;
}

// The caller's buffer, or a count when there is none.
class Output {
  public:
    Output(char *out, size_t capacity)
        : sink_(out, out ? capacity : 0), limit_(!out           ? SIZE_MAX
                                                 : capacity > 0 ? capacity - 1
                                                                : 0) {}

    // How much still fits in front of the terminator.
    size_t room() const { return limit_ > sink_.length() ? limit_ - sink_.length() : 0; }

    void put(unsigned char byte) { sink_.put(static_cast<char>(byte)); }
    void put(std::string_view bytes) { sink_.put(bytes); }

    // Terminates what is there. Returns the size of the whole, stored or not.
    size_t finish() {
        sink_.terminate();
        return sink_.length() + 1;
    }

  private:
    Sink sink_;
    size_t limit_;
};

void put_character(Output &output, uint32_t value, bool wide) {
    output.put(static_cast<unsigned char>(value));
    if (wide)
        output.put(static_cast<unsigned char>(value >> 8));
}

kestu_error_t *put_utf8(Output &output, uint32_t code) {
    char bytes[4];
    char *end = bytes;
    size_t room = output.room();
    if (convert_from_ucs(code, &end, &room) <= 0)
        return fail(0);
    output.put({bytes, static_cast<size_t>(end - bytes)});
    return nullptr;
}

kestu_error_t *put_escape(Output &output, const char **in, const char *end, bool wide) {
    uint32_t value = 0;
    if (kestu_error_t *err = esc_char(in, end, &value))
        return err;
    if (value >= 256)
        return put_utf8(output, value);
    put_character(output, value, wide);
    return nullptr;
}

uint32_t scan_octal(const char **in, const char *end) {
    uint32_t value = 0;
    for (int n = 0; n < 3 && *in != end && **in >= '0' && **in <= '7'; ++n, ++*in)
        value = value * 8 + static_cast<uint32_t>(**in - '0');
    return value;
}

// What stands for `byte`: itself, or an escape that is made in `buffer`.
std::string_view unparsed(unsigned char byte, char (&buffer)[4]) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    const size_t letter = size_t{byte} - first_letter_value;
    buffer[0] = '\\';
    buffer[1] = static_cast<char>(byte);
    if (std::isprint(byte)) {
        const bool escaped = byte == '"' || byte == '\'' || byte == '?' || byte == '\\';
        return escaped ? std::string_view{buffer, 2} : std::string_view{buffer + 1, 1};
    }
    if (letter < letters.size()) {
        buffer[1] = letters[letter];
        return {buffer, 2};
    }
    buffer[1] = 'x';
    buffer[2] = hex[byte >> 4];
    buffer[3] = hex[byte & 15];
    return {buffer, 4};
}

} // namespace

kestu_error_t *scan_hex(const char **in, const char *end, int max_digits, uint32_t *value) {
    const char *const start = *in;
    *value = 0;
    for (; *in != end && *in - start < max_digits; ++*in) {
        const auto byte = static_cast<unsigned char>(**in);
        if (has_class(byte, KESTU_CHAR_DIGIT))
            *value = *value * 16 + (byte & 15);
        else if (has_class(byte, KESTU_CHAR_HEX_LETTER))
            *value = *value * 16 + (byte & 7) + 9;
        else
            break;
    }
    return *in == start ? fail(KESTU_ERR_NO_HEX_DIGITS) : nullptr;
}

kestu_error_t *esc_char(const char **in, const char *end, uint32_t *value) {
    *value = '\\';
    if (*in == end)
        return nullptr;
    const char c = **in;
    if (c >= '0' && c <= '7') {
        *value = scan_octal(in, end);
        return nullptr;
    }
    ++*in;
    if (c == 'x' || c == 'u')
        return scan_hex(in, end, c == 'x' ? 2 : 4, value);
    const size_t letter = letters.find(c);
    *value = letter != letters.npos ? static_cast<uint32_t>(first_letter_value + letter)
                                    : static_cast<unsigned char>(c);
    return nullptr;
}

int convert_from_ucs(uint32_t code, char **out, size_t *room) {
    constexpr unsigned char lead_marks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    if (code == 0xFFFF)
        return 1;
    if (code > 0x10FFFF)
        return -1;
    const size_t size = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    if (*room < size)
        return 0;
    *room -= size;
    if (out) {
        for (size_t i = size - 1; i > 0; --i, code >>= 6)
            (*out)[i] = static_cast<char>(0x80 | (code & 0x3F));
        **out = static_cast<char>(lead_marks[size] | code);
        *out += size;
    }
    return 1;
}

kestu_error_t *kestu_str_escape_parse(char *out, size_t *size, const char *in, size_t inlen,
                                      int wide, int map) {
    Output output(out, *size);
    const char *const end = in + inlen;
    while (in != end) {
        const auto byte = static_cast<unsigned char>(*in++);
        if (byte == '\\') {
            if (kestu_error_t *err = put_escape(output, &in, end, wide != 0)) {
                output.finish();
                return err;
            }
        } else if (has_class(byte, KESTU_CHAR_LEAD)) {
            output.put(byte);
            if (in != end)
                output.put(static_cast<unsigned char>(*in++));
        } else {
            put_character(output, wide && map ? UniCode[byte] : byte, wide != 0);
        }
    }
    *size = output.finish();
    return nullptr;
}

kestu_error_t *kestu_str_escape_unparse(char *out, size_t *size, const char *in, size_t inlen) {
    Output output(out, *size);
    kestu_error_t *err = nullptr;
    for (; inlen > 0 && !err; --inlen) {
        char buffer[4];
        const std::string_view item = unparsed(static_cast<unsigned char>(*in++), buffer);
        if (item.size() <= output.room())
            output.put(item);
        else
            err = fail(KESTU_ERR_BUFFER_TOO_SMALL);
    }
    *size = output.finish();
    return err;
}
