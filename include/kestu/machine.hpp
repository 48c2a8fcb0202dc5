// The machine: processor, host and clocks, as plain values.
//
//     auto cpu = kestu::processor();
//     printf("%s: %u cores\n", cpu->name, cpu->core_count);
//     assert(kestu::processor_count() >= 1 && kestu::wall_clock() > 0);
#pragma once

#include "../kestu_cpu.h"
#include "../kestu_lib.h"
#include "../kestu_mach.h"
#include "error.hpp"

#include <memory>

namespace kestu {
inline namespace KESTU_CPP {

// What the processor is (kestu_cpu_detect), or the error; the record is large. `measure` asks for
// the clock rate of the first processor.
inline Expected<std::unique_ptr<kestu_cpu_t>> processor(std::nothrow_t, bool measure = false) {
    auto record = std::make_unique<kestu_cpu_t>();
    record->measure = measure;
    apr_pool_t *pool = nullptr;
    if (const apr_status_t status = apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr))
        return detail::failed(kestu_error_aprwrap_i(status, 0, nullptr, nullptr));
    kestu_error_t *err = kestu_cpu_detect(record.get(), pool);
    apr_pool_destroy(pool);
    if (err)
        return detail::failed(err);
    return record;
}

// As `processor` above, but throws the error.
inline std::unique_ptr<kestu_cpu_t> processor(bool measure = false) {
    return take(processor(std::nothrow, measure));
}

// A description of the running system.
inline std::string os_name() {
    char name[256];
    return kestu_mach_os_name(name, sizeof name);
}

// The number of processors configured, at least 1.
inline int processor_count() {
    return kestu_mach_os_cpu_num();
}

// Physical memory in mebibytes; 0 when unknown.
inline double physical_memory() {
    return kestu_mach_physmem();
}

// Seconds since the epoch.
inline double wall_clock() {
    return kestu_time_real();
}

// Seconds of the processor's time that the process has taken.
inline double processor_clock() {
    return kestu_time_cpu();
}

} // namespace KESTU_CPP
} // namespace kestu
