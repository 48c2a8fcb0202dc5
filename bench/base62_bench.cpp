// Integers to text and back in bases 10, 36 and 62, beside the standard libraries, which go to 36.
#include "kestu_escape.h"

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

// Numbers of every length up to 64 bits, or of the full length only.
const std::vector<int64_t> &numbers(bool any_length) {
    static const auto make = [](bool any) {
        std::mt19937_64 random(36);
        std::vector<int64_t> values(1024);
        for (int64_t &value : values)
            value = static_cast<int64_t>(random()) >> (any ? random() % 63 : 0);
        return values;
    };
    static const std::vector<int64_t> of_any_length = make(true);
    static const std::vector<int64_t> of_full_length = make(false);
    return any_length ? of_any_length : of_full_length;
}

struct Case {
    int base;
    bool any_length;
};

// Calls `convert` with one input after the other.
template <typename Input, typename Convert>
void run(benchmark::State &state, const std::vector<Input> &inputs, Convert convert) {
    size_t i = 0;
    for (auto _ : state)
        convert(inputs[i++ % inputs.size()]);
}

template <typename Write>
void to_text(benchmark::State &state, Case input, Write write) {
    char text[66];
    run(state, numbers(input.any_length), [&](int64_t value) {
        write(text, value, input.base);
        benchmark::DoNotOptimize(text);
    });
}

template <typename Read>
void from_text(benchmark::State &state, Case input, Read read) {
    std::vector<std::string> texts;
    for (const int64_t value : numbers(input.any_length)) {
        char text[66];
        kestu_str_int64_to_base62(value, input.base, text, sizeof text);
        texts.emplace_back(text);
    }
    run(state, texts,
        [&](const std::string &text) { benchmark::DoNotOptimize(read(text, input.base)); });
}

void add(const char *name, auto measure, auto convert) {
    for (const Case input : {Case{10, false}, {10, true}, {36, false}, {36, true}, {62, false}}) {
        std::string full = name;
        if (input.base > 36 && full.find("/ours") == full.npos)
            continue;
        full.replace(full.find('*'), 1,
                     std::to_string(input.base) + (input.any_length ? " any length" : " 64 bits"));
        benchmark::RegisterBenchmark(full.c_str(), measure, input, convert);
    }
}

void write_ours(char (&text)[66], int64_t value, int base) {
    kestu_str_int64_to_base62(value, base, text, sizeof text);
}

void write_to_chars(char (&text)[66], int64_t value, int base) {
    *std::to_chars(text, text + sizeof text - 1, value, base).ptr = '\0';
}

int64_t read_ours(const std::string &text, int base) {
    char *end = nullptr;
    int64_t value = 0;
    return kestu_str_base62_to_int64(text.c_str(), &end, base, &value) ? 0 : value;
}

int64_t read_strtoll(const std::string &text, int base) {
    char *end = nullptr;
    return std::strtoll(text.c_str(), &end, base);
}

int64_t read_from_chars(const std::string &text, int base) {
    int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value, base);
    return value;
}

} // namespace

int main(int argc, char **argv) {
    add("to base */ours", to_text<decltype(&write_ours)>, write_ours);
    add("to base */std::to_chars", to_text<decltype(&write_to_chars)>, write_to_chars);
    add("from base */ours", from_text<decltype(&read_ours)>, read_ours);
    add("from base */strtoll", from_text<decltype(&read_strtoll)>, read_strtoll);
    add("from base */std::from_chars", from_text<decltype(&read_from_chars)>, read_from_chars);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
