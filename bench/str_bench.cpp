// Strings: UTF-8 length beside a byte loop, bounded copies beside libbsd, comparison without case
// beside strcasecmp, replacement beside a search and a copy of the same bytes.
#include "kestu_str.h"

#include <benchmark/benchmark.h>
#include <bsd/string.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <strings.h>

namespace {

std::string cased_text(size_t size, size_t phase) {
    std::string text(size, ' ');
    for (size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>((i % 3 == phase ? 'A' : 'a') + i % 26);
    return text;
}

// Two-byte characters make up a third of the text.
std::string utf8_text(size_t size) {
    std::string text;
    while (text.size() < size)
        text += "abé";
    return text;
}

template <typename Call>
void measure(const std::string &name, Call call) {
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State &state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(call());
    });
}

size_t byte_loop(const char *s) {
    size_t characters = 0;
    for (; *s; ++s)
        characters += (*s & 0xC0) != 0x80;
    return characters;
}

void declare_lengths(size_t size) {
    const std::string text = utf8_text(size);
    const std::string name = "UTF-8 length of " + std::to_string(size) + " bytes/";
    measure(name + "ours", [text] { return kestu_str_utf8_len(text.c_str()); });
    measure(name + "byte loop", [text] { return byte_loop(text.c_str()); });
    measure(name + "limit (strlen)", [text] { return strlen(text.c_str()); });
}

void declare_copies(size_t size) {
    static char target[8192];
    const std::string text = cased_text(size, 0);
    const std::string copy = "copy of " + std::to_string(size) + " bytes/";
    measure(copy + "ours",
            [text] { return kestu_str_strlcpy(target, text.c_str(), sizeof target); });
    measure(copy + "libbsd", [text] { return strlcpy(target, text.c_str(), sizeof target); });
    measure(copy + "limit (memcpy)",
            [text] { return memcpy(target, text.data(), text.size() + 1); });
    const std::string append = "appending " + std::to_string(size) + " bytes/";
    const auto cut = [size] { target[size] = '\0'; };
    measure(append + "ours", [text, cut] {
        cut();
        return kestu_str_strlcat(target, text.c_str(), sizeof target);
    });
    measure(append + "libbsd", [text, cut] {
        cut();
        return strlcat(target, text.c_str(), sizeof target);
    });
}

void declare_comparisons(size_t size) {
    const std::string a = cased_text(size, 0);
    const std::string b = cased_text(size, 1);
    const std::string name = "comparison of " + std::to_string(size) + " bytes/";
    measure(name + "ours", [a, b] { return kestu_str_stricmp(a.c_str(), b.c_str()); });
    measure(name + "strcasecmp", [a, b] { return strcasecmp(a.c_str(), b.c_str()); });
    // As parts of other texts, which lie anywhere in memory.
    const std::string part = "x" + a, other = "12345" + b;
    const std::string parts = "comparison of parts of " + std::to_string(size) + " bytes/";
    measure(parts + "ours",
            [part, other] { return kestu_str_stricmp(part.c_str() + 1, other.c_str() + 5); });
    measure(parts + "strcasecmp",
            [part, other] { return strcasecmp(part.c_str() + 1, other.c_str() + 5); });
}

void declare_replacements() {
    std::string text;
    while (text.size() < 1 << 20)
        text += "some words and a pattern, ";
    measure("replacement in 1 MiB/ours", [text] {
        char *made = kestu_str_replace_all(text.c_str(), "pattern", "replacement");
        const size_t length = strlen(made);
        free(made);
        return length;
    });
    measure("replacement in 1 MiB/limit (search and copy)", [text] {
        size_t found = 0;
        for (const char *s = text.c_str(); (s = strstr(s, "pattern")); s += 7)
            ++found;
        free(strdup(text.c_str()));
        return found;
    });
}

} // namespace

int main(int argc, char **argv) {
    for (const size_t size : {12, 1 << 20})
        declare_lengths(size);
    for (const size_t size : {24, 4000})
        declare_copies(size);
    for (const size_t size : {8, 32, 1 << 20})
        declare_comparisons(size);
    declare_replacements();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
