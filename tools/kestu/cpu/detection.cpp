// Detection, and what to do when it fails.
#include "cpu/cpu.hpp"

#include "common/text.hpp"

#include "kestu_lib.h"
#include "kestu_mach.h"
#include "kestu_str.h"

#include <sched.h>

namespace program {
namespace {

bool has_rules(uint32_t vendor) {
    return vendor == KESTU_CPU_INTEL || vendor == KESTU_CPU_AMD;
}

// What fails here is not told: the vendor and the name are known, and nobody promised more.
void read_by_amds_rules(Cpu &cpu) {
    cpu_set_t saved;
    CPU_ZERO(&saved);
    sched_getaffinity(0, sizeof saved, &saved);
    const std::string name = cpu.record.name;
    kestu_cpu_amd_func(&cpu.record);
    kestu_error_clear(kestu_cpu_amd_topology(&cpu.record, kestu_pool));
    if (name != cpu.record.name)
        cpu.brand = cpu.record.name;
    kestu_str_strlcpy(cpu.record.name, name.c_str(), sizeof cpu.record.name);
    sched_setaffinity(0, sizeof saved, &saved);
}

} // namespace

kestu_error_t *detect(Cpu &cpu) {
    if (kestu_error_t *err = kestu_cpu_detect_on(&cpu.record, nullptr, kestu_pool))
        return err;
    if (!has_rules(cpu.record.vendor))
        read_by_amds_rules(cpu);
    if (cpu.record.thread_count > 0)
        cpu.left_out = kestu_mach_os_cpu_num() - static_cast<int>(cpu.record.thread_count);
    add_answers(cpu);
    add_system(cpu);
    return nullptr;
}

kestu_error_t *detect_recorded(Cpu &cpu) {
    if (kestu_error_t *err = kestu_cpu_detect(&cpu.record, kestu_pool))
        return err;
    if (!has_rules(cpu.record.vendor))
        read_by_amds_rules(cpu);
    kestu_error_clear(kestu_cpu_bind_context_to_logcpu(0));
    add_answers(cpu);
    cpu.features.saved = cpu.features.permitted = ~uint64_t{0}; // nobody runs on it
    return nullptr;
}

std::string explain(int code) {
    switch (code) {
    case KESTU_ERR_NO_THREAD_LEVEL:
        return "Leaf 0xB of this processor tells no threads, without which its cores cannot be "
               "counted. A virtual machine may have made it up.";
    case KESTU_ERR_CPUID_RESTRICTED:
        return "The firmware hides the leaves that count the cores. Look in its settings for a "
               "limit of cpuid and switch it off.";
    case KESTU_ERR_TOPOLOGY:
        return "What the processors tell of themselves does not fit together. In a virtual machine "
               "or a sandbox, binding to a processor may be without effect.";
    default:
        return "";
    }
}

} // namespace program
