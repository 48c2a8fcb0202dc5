// Processors that answer anything: as recorded tables, and as a stream of registers in the order in
// which they are asked for.
#include "fuzz/check.hpp"
#include "kestu_cpu.h"
#include "kestu_mach.h"

#include "machines/leaf_table.hpp"

#include <sstream>
#include <stdexcept>

using namespace kestu::fuzz;

namespace {

// The machine that the library sees.
struct Machine {
    size_t processors = 0;
    size_t current = 0;
    const machines::RecordedMachine *recorded = nullptr;
    const uint8_t *stream = nullptr;
    size_t left = 0;

    machines::Registers answer(uint32_t leaf, uint32_t subleaf) {
        if (recorded)
            return recorded->at(current).get(leaf, subleaf);
        machines::Registers registers;
        const size_t taken = left < sizeof registers ? left : sizeof registers;
        std::memcpy(&registers, stream, taken);
        stream += taken;
        left -= taken;
        return registers;
    }
};

Machine machine;

template <size_t Size>
void require_text(const char (&text)[Size]) {
    require(std::memchr(text, 0, Size) != nullptr);
}

void require_sums(const kestu_cpu_t &cpu) {
    uint32_t cores = 0;
    uint32_t threads = 0;
    for (uint32_t i = 0; i < cpu.package_count; ++i) {
        cores += cpu.packages[i].core_count;
        threads += cpu.packages[i].thread_count;
    }
    require(cores == cpu.core_count && threads == cpu.thread_count);
    for (uint32_t i = 0; i < cpu.core_count; ++i)
        threads -= cpu.cores[i].thread_count;
    require(threads == 0 && cpu.thread_count == machine.processors);
}

void require_caches(const kestu_cpu_t &cpu) {
    require(cpu.cache_count <= KESTU_CPU_MAX_CACHES);
    for (uint32_t i = 0; i < cpu.cache_count; ++i) {
        // None is counted when its only processor answers the identifier of the broadcast.
        require(cpu.caches[i].count <= cpu.thread_count);
        require_text(cpu.caches[i].label);
        require_text(cpu.caches[i].description);
    }
}

void detect() {
    static kestu_cpu_t cpu;
    static apr_pool_t *const pool = [] {
        apr_pool_t *made = nullptr;
        require(apr_pool_create_ex(&made, kestu_pool, nullptr, nullptr) == APR_SUCCESS);
        return made;
    }();
    cpu = {};
    cpu.measure = 1;
    kestu_error_t *err = kestu_cpu_detect(&cpu, pool);
    require_text(cpu.vendor_name);
    require_text(cpu.vendor_id);
    require_text(cpu.name);
    if (!err && cpu.vendor != KESTU_CPU_INTEL && cpu.vendor != KESTU_CPU_AMD) {
        machine.current = 0;
        err = kestu_cpu_amd_topology(&cpu, pool);
    }
    if (!err) {
        require_sums(cpu);
        require_caches(cpu);
    }
    kestu_error_clear(err);
    apr_pool_clear(pool);
}

void detect_recorded(const uint8_t *data, size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char *>(data), size));
    try {
        const machines::RecordedMachine recorded = machines::read_leaf_tables(in);
        machine = {.processors = recorded.size(), .recorded = &recorded};
        detect();
    } catch (const std::runtime_error &) {
    }
}

} // namespace

void kestu_cpu_cpuid_comm(uint32_t leaf, uint32_t subleaf, uint32_t *eax, uint32_t *ebx,
                          uint32_t *ecx, uint32_t *edx) {
    const machines::Registers answer = machine.answer(leaf, subleaf);
    *eax = answer.eax;
    *ebx = answer.ebx;
    *ecx = answer.ecx;
    *edx = answer.edx;
}

int kestu_mach_os_cpu_num(void) {
    return static_cast<int>(machine.processors);
}

kestu_error_t *kestu_cpu_bind_context_to_logcpu(uint32_t cpu) {
    machine.current = cpu;
    return nullptr;
}

kestu_error_t *kestu_cpu_set_chk_process_affinity_consistency(kestu_cpu_genaffinity *mask,
                                                              uint32_t count) {
    kestu_error_t *err = nullptr;
    for (uint32_t cpu = 0; cpu < count && !err; ++cpu)
        err = intel_cpuid_set_genaffinity_bit(mask, cpu);
    return err;
}

double kestu_cpu_freq(void) {
    return 1.0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    if (size == 0)
        return 0;
    if (*data == 'p' || *data == '#') {
        detect_recorded(data, size);
    } else {
        machine = {.processors = *data, .stream = data + 1, .left = size - 1};
        detect();
    }
    return 0;
}
