// The rate of the time-stamp counter.
#include "machine/cpu_freq.hpp"

#include "kestu_cpu.h"
#include "kestu_mach.h"

#include <cmath>

#include <x86intrin.h>

namespace kestu {
namespace {

constexpr int max_rounds = 10;
constexpr int64_t round_microseconds = 10000;
constexpr double tolerance = 0.1;

// When the low half of the counter wraps within a round, the difference is huge and the next round
// replaces it.
double measure_round(const Counter &counter) {
    const uint64_t first_ticks = counter.ticks();
    const double start = counter.seconds();
    counter.sleep(round_microseconds);
    const uint64_t last_ticks = counter.ticks();
    const double end = counter.seconds();
    return static_cast<double>(last_ticks - first_ticks) / ((end - start) * 1000000.0);
}

} // namespace

double measure_rate(const Counter &counter) {
    double rate = 0.0;
    for (int round = 0; round < max_rounds; ++round) {
        const double previous = rate;
        rate = measure_round(counter);
        // A clock that was set back makes a rate negative, which agrees with nothing.
        if (std::fabs(rate - previous) / std::fabs(rate) < tolerance)
            break;
    }
    return rate;
}

} // namespace kestu

using namespace kestu;

double kestu_cpu_freq(void) {
    constexpr auto low_ticks = [] { return static_cast<uint32_t>(__rdtsc()); };
    return measure_rate(
        {.ticks = low_ticks, .seconds = kestu_time_real, .sleep = kestu_time_sleep});
}
