// What the record does not hold: of cpuid, and of the system.
#include "cpu/cpu.hpp"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace program {
namespace {

namespace fs = std::filesystem;

struct Registers {
    uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

Registers ask(uint32_t leaf) {
    Registers answer;
    const uint32_t first = leaf & 0xC0000000;
    kestu_cpu_cpuid_comm(first, 0, &answer.eax, &answer.ebx, &answer.ecx, &answer.edx);
    if (answer.eax < leaf)
        return {};
    kestu_cpu_cpuid_comm(leaf, 0, &answer.eax, &answer.ebx, &answer.ecx, &answer.edx);
    return answer;
}

bool has(const Cpu &cpu, int feature) {
    return kestu_cpu_feature_state(&cpu.features, feature) != KESTU_CPU_ABSENT;
}

void add_addresses(Cpu &cpu) {
    const uint32_t sizes = ask(0x80000008).eax;
    cpu.physical_bits = sizes & 0xFF;
    cpu.linear_bits = sizes >> 8 & 0xFF;
}

void add_hypervisor(Cpu &cpu) {
    if (!has(cpu, KESTU_CPU_FEATURE_HYPERVISOR))
        return;
    const Registers answer = ask(0x40000000);
    const uint32_t words[] = {answer.ebx, answer.ecx, answer.edx};
    char name[sizeof words + 1] = {};
    std::memcpy(name, words, sizeof words);
    cpu.hypervisor = name[0] ? name : "one that does not tell its name";
}

// Leaf 0x15 tells the counter's rate as a multiple of a crystal's, which not all processors name.
void add_clocks(Cpu &cpu) {
    const Registers rates = ask(0x16);
    cpu.base_mhz = rates.eax & 0xFFFF;
    cpu.max_mhz = rates.ebx & 0xFFFF;
    cpu.bus_mhz = rates.ecx & 0xFFFF;
    const Registers counter = ask(0x15);
    if (counter.eax > 0)
        cpu.counter_mhz = double(counter.ecx) * counter.ebx / counter.eax / 1e6;
}

std::string first_line(const fs::path &path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    return line;
}

// The entries of a folder in their natural order: node2 before node10.
std::vector<fs::path> entries(const char *folder) {
    std::vector<fs::path> found;
    std::error_code failed;
    for (fs::directory_iterator at(folder, failed), end; !failed && at != end; at.increment(failed))
        found.push_back(at->path());
    std::sort(found.begin(), found.end(), [](const fs::path &a, const fs::path &b) {
        return strverscmp(a.filename().c_str(), b.filename().c_str()) < 0;
    });
    return found;
}

} // namespace

void add_answers(Cpu &cpu) {
    kestu_cpu_features_read(&cpu.features);
    add_addresses(cpu);
    add_hypervisor(cpu);
    add_clocks(cpu);
}

void add_system(Cpu &cpu) {
    for (const fs::path &node : entries("/sys/devices/system/node"))
        if (const std::string name = node.filename();
            name.starts_with("node") && name.find_first_not_of("0123456789", 4) == name.npos)
            cpu.nodes.push_back({name.substr(4), first_line(node / "cpulist")});
    for (const fs::path &file : entries("/sys/devices/system/cpu/vulnerabilities"))
        cpu.vulnerabilities.push_back({file.filename(), first_line(file)});
}

} // namespace program
