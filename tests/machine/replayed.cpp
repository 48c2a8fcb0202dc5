#include "machine/replayed.hpp"

#include <cstring>
#include <fstream>
#include <stdexcept>

namespace kestu::test {

RecordedMachine load_machine(const std::string &name) {
    std::ifstream in(std::string(KESTU_CPUID_FOLDER) + "/" + name + ".txt");
    if (!in)
        throw std::runtime_error("no recorded machine " + name);
    return machines::read_leaf_tables(in);
}

void set_vendor(LeafTable &table, std::string_view vendor, uint32_t highest_leaf) {
    uint32_t words[3] = {};
    std::memcpy(words, vendor.data(), vendor.size());
    table.set(0, 0, {highest_leaf, words[0], words[2], words[1]});
}

void set_brand(LeafTable &table, std::string_view brand) {
    uint32_t words[12] = {};
    std::memcpy(words, brand.data(), brand.size());
    table.set(0x80000000, 0, {0x80000004, 0, 0, 0});
    for (uint32_t i = 0; i < 3; ++i)
        table.set(0x80000002 + i, 0,
                  {words[4 * i], words[4 * i + 1], words[4 * i + 2], words[4 * i + 3]});
}

std::unique_ptr<kestu_cpu_t> new_record() {
    return std::make_unique<kestu_cpu_t>();
}

} // namespace kestu::test
