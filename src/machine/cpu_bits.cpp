// Small queries about words and about what the platform offers.
#include "kestu_cpu.h"

#include "kestu_util.h"

// Kept: nothing writes it. Relied on by: programs that link to it.
int32_t os_sse = 0;

uint32_t get_bits_from_uint32(uint32_t value, uint8_t low, uint8_t high) {
    return kestu_util_get_bits_from_word(value, low, high);
}

int kestu_cpu_check_flag(uint32_t bit, uint32_t word) {
    return bit < 32 && (word >> bit & 1) != 0;
}

int kestu_cpu_check_cpuid_flag(void) {
    return 1;
}

void kestu_cpu_check_os_sse(kestu_cpu_t *record) {
    record->os_sse = 1;
}
