#include "machines/replay.hpp"

#include "kestu_cpu.h"
#include "kestu_mach.h"

#include <dlfcn.h>

namespace machines {
namespace {

const RecordedMachine *replayed = nullptr;
size_t current = 0; // the processor that the thread is bound to, in its own imagination

// The library's own function, which stands behind the program's.
template <typename Function>
Function *library_function(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

#define LIBRARY_FUNCTION(name) ::machines::library_function<decltype(name)>(#name)

} // namespace

Replay::Replay(const RecordedMachine &machine) {
    replayed = &machine;
    current = 0;
}

Replay::~Replay() {
    replayed = nullptr;
}

} // namespace machines

using namespace machines;

void kestu_cpu_cpuid_comm(uint32_t leaf, uint32_t subleaf, uint32_t *eax, uint32_t *ebx,
                          uint32_t *ecx, uint32_t *edx) {
    if (!replayed) {
        static const auto original = LIBRARY_FUNCTION(kestu_cpu_cpuid_comm);
        return original(leaf, subleaf, eax, ebx, ecx, edx);
    }
    const Registers answer = replayed->at(current).get(leaf, subleaf);
    *eax = answer.eax;
    *ebx = answer.ebx;
    *ecx = answer.ecx;
    *edx = answer.edx;
}

int kestu_mach_os_cpu_num(void) {
    static const auto original = LIBRARY_FUNCTION(kestu_mach_os_cpu_num);
    return replayed ? static_cast<int>(replayed->size()) : original();
}

kestu_error_t *kestu_cpu_bind_context_to_logcpu(uint32_t cpu) {
    static const auto original = LIBRARY_FUNCTION(kestu_cpu_bind_context_to_logcpu);
    if (!replayed)
        return original(cpu);
    current = cpu;
    return nullptr;
}

kestu_error_t *kestu_cpu_set_chk_process_affinity_consistency(kestu_cpu_genaffinity *mask,
                                                              uint32_t count) {
    static const auto original = LIBRARY_FUNCTION(kestu_cpu_set_chk_process_affinity_consistency);
    if (!replayed)
        return original(mask, count);
    kestu_error_t *err = nullptr;
    for (uint32_t cpu = 0; cpu < count && !err; ++cpu)
        err = intel_cpuid_set_genaffinity_bit(mask, cpu);
    return err;
}
