// The instruction. It stands alone in its file, and is never inlined, so that the library's own
// calls go through the dynamic symbol, which a program may define for itself.
#include "kestu_cpu.h"

#include <cpuid.h>

[[gnu::noinline]] void kestu_cpu_cpuid_comm(uint32_t leaf, uint32_t subleaf, uint32_t *eax,
                                            uint32_t *ebx, uint32_t *ecx, uint32_t *edx) {
    uint32_t a;
    uint32_t b;
    uint32_t c;
    uint32_t d;
    __cpuid_count(leaf, subleaf, a, b, c, d);
    *eax = a;
    *ebx = b;
    *ecx = c;
    *edx = d;
}
