// Strings: UTF-8 length beside a byte loop, bounded copies beside libbsd and beside strlen with
// memcpy, comparison without case beside strcasecmp, replacement beside std::string's search and
// append, checked conversions of numbers beside the C library's parsers.
#include "kestu_str.h"

#include <benchmark/benchmark.h>
#include <bsd/string.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
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
    benchmark::RegisterBenchmark(name.c_str(), [call](benchmark::State &state) mutable {
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
    const char *const text = strdup(cased_text(size, 0).c_str()); // at one place for all
    const std::string copy = "copy of " + std::to_string(size) + " bytes/";
    measure(copy + "ours", [text] { return kestu_str_strlcpy(target, text, sizeof target); });
    measure(copy + "libbsd", [text] { return strlcpy(target, text, sizeof target); });
    measure(copy + "strlen and memcpy", [text] {
        const size_t length = strlen(text);
        memcpy(target, text, length + 1);
        return length;
    });
    measure(copy + "limit (memcpy of a known length)",
            [text, size] { return memcpy(target, text, size + 1); });
}

// Behind 16 bytes, or as many as are appended when that is more.
void declare_appends(size_t size) {
    static char target[8192];
    const char *const text = strdup(cased_text(size, 0).c_str()); // at one place for all
    const size_t before = std::max(size_t{16}, size / 4000 * size);
    memset(target, 'x', before);
    const std::string append = "appending " + std::to_string(size) + " bytes/";
    const auto cut = [before] { target[before] = '\0'; };
    measure(append + "ours", [text, cut] {
        cut();
        return kestu_str_strlcat(target, text, sizeof target);
    });
    measure(append + "libbsd", [text, cut] {
        cut();
        return strlcat(target, text, sizeof target);
    });
    measure(append + "strlen and memcpy", [text, cut] {
        cut();
        const size_t found = strlen(target);
        const size_t length = strlen(text);
        memcpy(target + found, text, length + 1);
        return found + length;
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

std::string replaced(const std::string &text) {
    const std::string_view from = "pattern", to = "replacement";
    std::string made;
    made.reserve(text.size() + text.size() / 4);
    size_t rest = 0;
    for (size_t at = 0; (at = text.find(from, rest)) != text.npos; rest = at + from.size()) {
        made.append(text, rest, at - rest);
        made += to;
    }
    return made.append(text, rest);
}

void declare_replacements(const std::string &what, const std::string &part) {
    std::string text;
    while (text.size() < 1 << 20)
        text += part;
    const std::string name = "replacement in 1 MiB, " + what;
    measure(name + "/ours", [text] {
        char *made = kestu_str_replace_all(text.c_str(), "pattern", "replacement");
        const char last = made[0];
        free(made);
        return last;
    });
    measure(name + "/std string", [text] { return replaced(text).front(); });
    measure(name + "/limit (strdup)", [text] {
        char *made = strdup(text.c_str());
        const char last = made[0];
        free(made);
        return last;
    });
}

// Numbers of all magnitudes, taken in turn.
using Texts = std::array<std::string, 512>;

template <typename Make>
Texts texts_of(Make make) {
    std::mt19937_64 random(7);
    Texts texts;
    for (std::string &text : texts)
        text = make(random);
    return texts;
}

// `read` takes the text and its length.
template <typename Read>
void measure_reading(const std::string &name, const Texts &texts, Read read) {
    size_t next = 0;
    measure(name, [&texts, read, next]() mutable {
        const std::string &text = texts[next++ % texts.size()];
        return read(text.c_str(), text.size());
    });
}

void declare_integers() {
    static const Texts texts = texts_of([](std::mt19937_64 &random) {
        const uint64_t number = random() >> random() % 63;
        return std::to_string(static_cast<int64_t>(number >> 1) * (random() % 4 ? 1 : -1));
    });
    measure_reading("text to int64/ours", texts, [](const char *s, size_t) {
        int64_t number = 0;
        benchmark::DoNotOptimize(kestu_str_to_int64(s, &number));
        return number;
    });
    measure_reading("text to int64/strtoll", texts, [](const char *s, size_t) {
        char *end = nullptr;
        errno = 0;
        const int64_t number = std::strtoll(s, &end, 10);
        return errno == 0 && end != s && *end == '\0' ? number : 0;
    });
    measure_reading("text to int64/limit (from_chars of a known length)", texts,
                    [](const char *s, size_t size) {
                        int64_t number = 0;
                        std::from_chars(s, s + size, number);
                        return number;
                    });
}

void declare_doubles(const std::string &what, const Texts &texts) {
    const std::string name = "text to double " + what;
    measure_reading(name + "/ours", texts, [](const char *s, size_t) {
        double number = 0;
        benchmark::DoNotOptimize(kestu_str_to_double(s, &number));
        return number;
    });
    measure_reading(name + "/strtod", texts, [](const char *s, size_t) {
        char *end = nullptr;
        errno = 0;
        const double number = std::strtod(s, &end);
        return errno == 0 && end != s && *end == '\0' ? number : 0;
    });
    measure_reading(name + "/limit (from_chars of a known length)", texts,
                    [](const char *s, size_t size) {
                        double number = 0;
                        std::from_chars(s, s + size, number);
                        return number;
                    });
}

std::string printed(const char *format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

void declare_shortest(const std::string &what, const Texts &texts) {
    std::vector<double> numbers;
    for (const std::string &text : texts)
        numbers.push_back(std::stod(text));
    const auto measure_writing = [&](const std::string &who, auto write) {
        size_t next = 0;
        measure("shortest text of doubles, " + what + who, [numbers, next, write]() mutable {
            return write(numbers[next++ % numbers.size()]);
        });
    };
    measure_writing("/ours", [](double number) {
        char text[KESTU_STR_DOUBLE_SIZE];
        return kestu_str_from_double(number, text, sizeof text);
    });
    measure_writing("/std::to_chars", [](double number) {
        char text[KESTU_STR_DOUBLE_SIZE];
        return std::to_chars(text, text + sizeof text, number).ptr - text;
    });
}

void declare_numbers() {
    declare_integers();
    static const Texts amounts = texts_of([](std::mt19937_64 &random) {
        return printed("%.2f", static_cast<double>(random() % 10000000) / 100);
    });
    static const Texts reals = texts_of([](std::mt19937_64 &random) {
        return printed("%.17g", std::pow(10, static_cast<double>(random() % 6000) / 100 - 30));
    });
    declare_doubles("amounts", amounts);
    declare_doubles("17 digits", reals);
    declare_shortest("amounts", amounts);
    declare_shortest("17 digits", reals);
}

} // namespace

int main(int argc, char **argv) {
    for (const size_t size : {12, 1 << 20})
        declare_lengths(size);
    for (const size_t size : {24, 4000}) {
        declare_copies(size);
        declare_appends(size);
    }
    for (const size_t size : {8, 32, 1 << 20})
        declare_comparisons(size);
    declare_replacements("10000 hits", std::string(93, 'x') + "pattern");
    declare_replacements("40000 hits", "some words and a pattern, ");
    declare_numbers();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
