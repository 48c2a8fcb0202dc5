// `kestu escape` and `kestu unescape`: bytes as printable text, and back.
#include "common/input_file.hpp"
#include "common/text.hpp"
#include "program.hpp"

#include "kestu_escape.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <iterator>
#include <memory>

namespace program {
namespace {

using Texts = std::vector<std::string>;

std::string standard_input() {
    return {std::istreambuf_iterator<char>(std::cin), {}};
}

void escape(const std::string &bytes, Outcome &outcome) {
    size_t size = 0;
    if (!outcome.ok(kestu_str_escape_unparse(nullptr, &size, bytes.data(), bytes.size())))
        return;
    std::string text(size + 4, '\0');
    size = text.size();
    if (outcome.ok(kestu_str_escape_unparse(text.data(), &size, bytes.data(), bytes.size()))) {
        std::fwrite(text.data(), 1, size - 1, stdout);
        std::putchar('\n');
    }
}

// False for what is no character.
bool append_utf8(uint32_t code, std::string &bytes) {
    char utf8[4];
    char *out = utf8;
    size_t room = sizeof utf8;
    const bool is_half = code >= 0xD800 && code < 0xE000;
    const bool done = !is_half && code != 0xFFFF && convert_from_ucs(code, &out, &room) == 1;
    bytes.append(utf8, out);
    return done;
}

// A character of 16 bits, or two that stand for one beyond them, or one of 32 bits; the letter
// stands at `in`.
kestu_error_t *take_character(const char *&in, const char *end, std::string &bytes) {
    const char *start = in - 1;
    uint32_t code = 0;
    const int digits = *in == 'u' ? 4 : 8;
    if (kestu_error_t *err = scan_hex(&++in, end, digits, &code))
        return err;
    if (code >= 0xD800 && code < 0xDC00 && end - in > 2 && in[0] == '\\' && in[1] == 'u') {
        uint32_t low = 0;
        in += 2;
        if (kestu_error_t *err = scan_hex(&in, end, 4, &low))
            return err;
        code =
            low >= 0xDC00 && low < 0xE000 ? 0x10000 + (code - 0xD800) * 0x400 + low - 0xDC00 : code;
    }
    return append_utf8(code, bytes) ? nullptr
                                    : in_words("'" + std::string(start, in) + "' is no character");
}

// As the library does, but that \u and \U are characters, and all of them UTF-8.
void unescape_utf8(const std::string &text, Outcome &outcome) {
    std::string bytes;
    const char *end = text.data() + text.size();
    kestu_error_t *err = nullptr;
    for (const char *in = text.data(); in < end && !err;) {
        uint32_t byte = static_cast<unsigned char>(*in++);
        const bool escapes = byte == '\\' && in < end;
        if (escapes && (*in == 'u' || *in == 'U')) {
            err = take_character(in, end, bytes);
            continue;
        }
        if (escapes)
            err = esc_char(&in, end, &byte);
        if (byte > 0xFF)
            append_utf8(byte, bytes);
        else
            bytes += static_cast<char>(byte);
    }
    if (outcome.ok(err))
        print(bytes);
}

void unescape(const std::string &text, Outcome &outcome) {
    size_t size = 0;
    if (!outcome.ok(kestu_str_escape_parse(nullptr, &size, text.data(), text.size(), 0, 0)))
        return;
    std::string bytes(size, '\0');
    if (outcome.ok(kestu_str_escape_parse(bytes.data(), &size, text.data(), text.size(), 0, 0)))
        std::fwrite(bytes.data(), 1, size - 1, stdout);
}

// The newline that ends a text on standard input is not part of it.
std::string text_on_standard_input() {
    std::string text = standard_input();
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

} // namespace

void add_escape_command(CLI::App &app, Outcome &outcome) {
    auto texts = std::make_shared<Texts>();
    CLI::App *command = app.add_subcommand("escape", "Print bytes as text with backslash escapes");
    command->add_option("TEXT", *texts, "Texts, a line each (standard input as one text)");
    command->callback([texts, &outcome] {
        if (texts->empty())
            texts->push_back(standard_input());
        for (const std::string &text : *texts)
            escape(text, outcome);
    });
}

void add_unescape_command(CLI::App &app, Outcome &outcome) {
    auto escaped = std::make_shared<Texts>();
    auto utf8 = std::make_shared<bool>(false);
    CLI::App *command =
        app.add_subcommand("unescape", "Write the bytes that escaped text stands for");
    command->add_option("TEXT", *escaped,
                        "Escaped texts (standard input without its last newline)");
    command->add_flag("--utf8", *utf8, "Write UTF-8 for all of \\uXXXX, and know \\UXXXXXXXX");
    command->callback([escaped, utf8, &outcome] {
        if (escaped->empty())
            escaped->push_back(text_on_standard_input());
        for (const std::string &text : *escaped)
            *utf8 ? unescape_utf8(text, outcome) : unescape(text, outcome);
    });
}

} // namespace program
