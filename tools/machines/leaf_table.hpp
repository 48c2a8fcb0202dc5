// Recorded leaf tables: what cpuid answers on each logical processor of a machine.
#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <utility>
#include <vector>

namespace machines {

struct Registers {
    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
};

class LeafTable {
  public:
    void set(uint32_t leaf, uint32_t subleaf, const Registers &answer);
    Registers get(uint32_t leaf, uint32_t subleaf) const; // zeros for what is not recorded

  private:
    std::map<std::pair<uint32_t, uint32_t>, Registers> answers_;
};

// One table a logical processor.
using RecordedMachine = std::vector<LeafTable>;

// Reads the format in which tables are kept: a line "processor N" (decimal, counted from 0) begins
// a processor, and each line "LEAF SUBLEAF EAX EBX ECX EDX" below it (hexadecimal, no prefix) is an
// answer. Lines that begin with '#' and empty ones are skipped. Throws std::runtime_error, which
// names the line, for anything else.
RecordedMachine read_leaf_tables(std::istream &in);

} // namespace machines
