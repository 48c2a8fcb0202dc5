#include "machines/recording.hpp"

#include <algorithm>

#include <sched.h>

namespace machines {
namespace {

// A range of leaves is not longer than this, and no leaf has more subleaves.
constexpr uint32_t max_leaves = 0xFF;
constexpr uint32_t max_subleaves = 64;

constexpr uint32_t with_subleaves[] = {4,    7,    0xB,  0xD,        0xF,        0x10,      0x12,
                                       0x14, 0x17, 0x18, 0x1B,       0x1D,       0x1E,      0x1F,
                                       0x20, 0x23, 0x24, 0x8000001D, 0x80000020, 0x80000026};

// These two answer their identifier for levels that they do not have, too.
bool counts_levels(uint32_t leaf) {
    return leaf == 0xB || leaf == 0x1F || leaf == 0x80000026;
}

Registers ask(uint32_t leaf, uint32_t subleaf) {
    Registers answer;
    kestu_cpu_cpuid_comm(leaf, subleaf, &answer.eax, &answer.ebx, &answer.ecx, &answer.edx);
    return answer;
}

bool says_something(uint32_t leaf, const Registers &answer) {
    const uint32_t rest = counts_levels(leaf) ? 0 : answer.ecx | answer.edx;
    return (answer.eax | answer.ebx | rest) != 0;
}

void record_leaf(uint32_t leaf, LeafTable &table) {
    table.set(leaf, 0, ask(leaf, 0));
    if (std::find(std::begin(with_subleaves), std::end(with_subleaves), leaf) ==
        std::end(with_subleaves))
        return;
    for (uint32_t subleaf = 1; subleaf < max_subleaves; ++subleaf)
        if (const Registers answer = ask(leaf, subleaf); says_something(leaf, answer))
            table.set(leaf, subleaf, answer);
}

// The leaves from `first` to the highest, which it tells itself.
void record_range(uint32_t first, LeafTable &table) {
    const uint32_t highest = ask(first, 0).eax;
    if (highest < first)
        return;
    for (uint32_t leaf = first; leaf <= std::min(highest, first + max_leaves); ++leaf)
        record_leaf(leaf, table);
}

LeafTable record_processor() {
    constexpr uint32_t hypervisor = uint32_t{1} << 31;
    LeafTable table;
    record_range(0, table);
    if (ask(1, 0).ecx & hypervisor)
        record_range(0x40000000, table);
    record_range(0x80000000, table);
    return table;
}

} // namespace

RecordedMachine record(std::span<const kestu_cpu_processor_t> processors) {
    cpu_set_t saved;
    CPU_ZERO(&saved);
    const bool restore = sched_getaffinity(0, sizeof saved, &saved) == 0;
    RecordedMachine machine;
    for (const kestu_cpu_processor_t &processor : processors)
        if (kestu_error_t *err = kestu_cpu_bind_context_to_logcpu(processor.index))
            kestu_error_clear(err);
        else
            machine.push_back(record_processor());
    if (machine.empty()) // nothing is known of their places
        machine.push_back(record_processor());
    if (restore)
        sched_setaffinity(0, sizeof saved, &saved);
    return machine;
}

} // namespace machines
