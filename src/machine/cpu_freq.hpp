// Measuring the rate of a counter, apart from the counter.
#pragma once

#include <cstdint>

namespace kestu {

struct Counter {
    uint32_t (*ticks)();
    double (*seconds)();
    void (*sleep)(int64_t microseconds);
};

// The rate in ticks a microsecond, once two rounds agree within a tenth or after the tenth round.
double measure_rate(const Counter &counter);

} // namespace kestu
