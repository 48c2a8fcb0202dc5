// The instruction. It stands alone in its file, and is never inlined, so that the library's own
// calls go through the dynamic symbol, which a program may define for itself.
#include "kestu_cpu.h"

#include <cpuid.h>

[[gnu::noinline]] void kestu_cpu_cpuid_comm(uint32_t leaf, uint32_t subleaf, uint32_t *eax,
                                            uint32_t *ebx, uint32_t *ecx, uint32_t *edx) {
    __cpuid_count(leaf, subleaf, *eax, *ebx, *ecx, *edx);
}
