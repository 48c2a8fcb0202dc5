// Formatting: typical lines and single conversions, beside the C library, APR and {fmt} without
// compiled formats.
#include "kestu_format.h"

#include <apr_strings.h>
#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace {

// Values of all magnitudes, taken in turn.
constexpr size_t values = 512;
int ints[values];
uint64_t words[values];
double amounts[values]; // 0 to 10000 with up to four decimals
double reals[values];   // 1e-30 to 1e30 with all their digits

void make_values() {
    std::mt19937_64 random(7);
    for (size_t i = 0; i < values; ++i) {
        words[i] = random() >> random() % 64;
        ints[i] = static_cast<int>(words[i] >> 1) * (random() % 4 ? 1 : -1);
        amounts[i] = static_cast<double>(random() % 100000000) / 10000;
        reals[i] = std::pow(10, static_cast<double>(random() % 6000) / 100 - 30);
    }
}

const std::string long_text(1000, 'x');
const std::string long_format = std::string(400, 'x') + "%d" + std::string(400, 'y');
const std::string long_fmt_format = std::string(400, 'x') + "{}" + std::string(400, 'y');

template <typename Call>
void measure(const char *name, Call call) {
    benchmark::RegisterBenchmark(name, [call](benchmark::State &state) {
        char line[4096];
        size_t i = 0;
        for (auto _ : state) {
            call(line, i);
            benchmark::DoNotOptimize(line);
            benchmark::ClobberMemory();
            i = (i + 1) % values;
        }
    });
}

// `...` are the arguments, written with `i` for the number of the round.
#define CASE(name, format, fmt_format, ...)                                                        \
    measure(name "/ours", [](char *line, [[maybe_unused]] size_t i) {                              \
        rpl_snprintf(line, 4096, format, __VA_ARGS__);                                             \
    });                                                                                            \
    measure(name "/glibc snprintf", [](char *line, [[maybe_unused]] size_t i) {                    \
        std::snprintf(line, 4096, format, __VA_ARGS__);                                            \
    });                                                                                            \
    measure(name "/apr_snprintf", [](char *line, [[maybe_unused]] size_t i) {                      \
        apr_snprintf(line, 4096, format, __VA_ARGS__);                                             \
    });                                                                                            \
    measure(name "/fmt format_to_n", [](char *line, [[maybe_unused]] size_t i) {                   \
        *fmt::format_to_n(line, 4095, fmt::runtime(fmt_format), __VA_ARGS__).out = '\0';           \
    });

void declare_cases() {
    CASE("format message", "Cannot open file '%s': %s", "Cannot open file '{}': {}", "a.tif",
         "No such file or directory")
    CASE("format log line", "[%d] %s: %g bits in %.3f ms (%u of %u)",
         "[{}] {}: {:g} bits in {:.3f} ms ({} of {})", 4711, "reader", amounts[i], amounts[i],
         static_cast<unsigned>(i), 512u)
    CASE("format integers", "%d %d %d", "{} {} {}", ints[i], ints[i ^ 1], ints[i ^ 2])
    CASE("format 64 bits", "%lu,%lu", "{},{}", words[i], words[i ^ 1])
    CASE("format hexadecimal", "%08x %lx", "{:08x} {:x}", ints[i] & 0xFFFFFFF, words[i])
    CASE("format columns", "%-20s|%10d|%12.3f|", "{:20}|{:10}|{:12.3f}|", "name", ints[i],
         amounts[i])
    CASE("format long text", long_format.c_str(), long_fmt_format, ints[i])
    CASE("format long string", "%s", "{}", long_text.c_str())
    measure("format long string/limit (strlen and memcpy)", [](char *line, size_t) {
        const char *text = long_text.c_str();
        benchmark::DoNotOptimize(text);
        std::memcpy(line, text, std::strlen(text) + 1);
    });
    CASE("format %f", "%.2f %f", "{:.2f} {:f}", amounts[i], amounts[i ^ 1])
    CASE("format %e", "%e %.16e", "{:e} {:.16e}", reals[i], reals[i ^ 1])
    CASE("format %g", "%g %g", "{:g} {:g}", amounts[i], reals[i])
    CASE("format %.17g", "%.17g", "{:.17g}", reals[i])
}

} // namespace

int main(int argc, char **argv) {
    make_values();
    declare_cases();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
