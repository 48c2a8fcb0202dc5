// Recorded leaf tables: what cpuid answers on each logical processor of a machine.
#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <string>
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

    using Answers = std::map<std::pair<uint32_t, uint32_t>, Registers>;
    const Answers &answers() const { return answers_; }

  private:
    Answers answers_;
};

// One table a logical processor.
using RecordedMachine = std::vector<LeafTable>;

// Reads the format in which tables are kept: a line "processor N" (decimal, counted from 0) begins
// a processor, and each line "LEAF SUBLEAF EAX EBX ECX EDX" below it (hexadecimal, no prefix) is an
// answer. Lines that begin with '#' and empty ones are skipped. Raw dumps of the cpuid tool are
// read too: "CPU N:" begins a processor, and an answer is "0xLEAF 0xSUBLEAF: eax=… ebx=… ecx=…
// edx=…". Throws std::runtime_error, which names the line, for anything else.
RecordedMachine read_leaf_tables(std::istream &in);

// The machine in the format above.
std::string to_text(const RecordedMachine &machine);

} // namespace machines
