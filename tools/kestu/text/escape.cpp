// `kestu escape` and `kestu unescape`: bytes as printable text, and back.
#include "program.hpp"

#include "kestu_escape.h"

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

void add_escape_commands(CLI::App &app, Outcome &outcome) {
    auto texts = std::make_shared<Texts>();
    CLI::App *command = app.add_subcommand("escape", "Print bytes as text with backslash escapes");
    command->add_option("TEXT", *texts, "Texts, a line each (standard input as one text)");
    command->callback([texts, &outcome] {
        if (texts->empty())
            texts->push_back(standard_input());
        for (const std::string &text : *texts)
            escape(text, outcome);
    });
    auto escaped = std::make_shared<Texts>();
    command = app.add_subcommand("unescape", "Write the bytes that escaped text stands for");
    command->add_option("TEXT", *escaped,
                        "Escaped texts (standard input without its last newline)");
    command->callback([escaped, &outcome] {
        if (escaped->empty())
            escaped->push_back(text_on_standard_input());
        for (const std::string &text : *escaped)
            unescape(text, outcome);
    });
}

} // namespace program
