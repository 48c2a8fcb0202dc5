// The three clocks.
#include "kestu_mach.h"

#include "base/kept_errno.hpp"

#include <sys/time.h>
#include <sys/times.h>
#include <unistd.h>

namespace {

constinit double seconds_per_tick = 0.0;

} // namespace

int kestu_time_init(void) {
    seconds_per_tick = 1.0 / static_cast<double>(sysconf(_SC_CLK_TCK));
    return 0;
}

double kestu_time_real(void) {
    timeval now;
    if (gettimeofday(&now, nullptr) != 0)
        return 0.0;
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) / 1000000.0;
}

double kestu_time_cpu(void) {
    tms spent;
    times(&spent);
    return static_cast<double>(spent.tms_utime + spent.tms_stime) * seconds_per_tick;
}

void kestu_time_sleep(apr_interval_time_t interval) {
    const kestu::KeptErrno kept;
    apr_sleep(interval);
}
