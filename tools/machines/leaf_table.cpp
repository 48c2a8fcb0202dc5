#include "machines/leaf_table.hpp"

#include "kestu_cpu.h"

#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace machines {
namespace {

constexpr std::string_view blanks = " \t\r";

// Takes the first word off the line; empty at its end.
std::string_view take_word(std::string_view &line) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blanks));
    line.remove_prefix(word.size());
    return word;
}

// A number, which dumps of the cpuid tool write as "0x0b", "0x00:" or "eax=0x0000000b".
uint32_t take_number(std::string_view &line, int base) {
    std::string_view word = take_word(line);
    word.remove_prefix(word.find('=') + 1);
    if (word.starts_with("0x"))
        word.remove_prefix(2);
    if (word.ends_with(':'))
        word.remove_suffix(1);
    uint32_t number = 0;
    const auto [end, failure] =
        std::from_chars(word.data(), word.data() + word.size(), number, base);
    if (word.empty() || failure != std::errc() || end != word.data() + word.size())
        throw std::runtime_error(base == 16 ? "six hexadecimal numbers of 32 bits expected"
                                            : "a decimal number expected behind 'processor'");
    return number;
}

void begin_processor(std::string_view rest, RecordedMachine &machine) {
    const uint32_t index = take_number(rest, 10);
    if (index != machine.size())
        throw std::runtime_error("processor " + std::to_string(machine.size()) + " expected");
    if (index >= KESTU_CPU_MAX_PROCESSORS)
        throw std::runtime_error("too many processors");
    machine.emplace_back();
}

// A dump of one processor does not number it.
void begin_dumped(std::string_view rest, RecordedMachine &machine) {
    if (rest.find_first_of("0123456789") == std::string_view::npos)
        machine.emplace_back();
    else
        begin_processor(rest, machine);
}

void add_answer(std::string_view line, RecordedMachine &machine) {
    if (machine.empty())
        throw std::runtime_error("a line 'processor 0' must come first");
    const uint32_t leaf = take_number(line, 16);
    const uint32_t subleaf = take_number(line, 16);
    Registers answer;
    for (uint32_t *reg : {&answer.eax, &answer.ebx, &answer.ecx, &answer.edx})
        *reg = take_number(line, 16);
    if (!take_word(line).empty())
        throw std::runtime_error("more than six numbers");
    machine.back().set(leaf, subleaf, answer);
}

void read_line(std::string_view line, RecordedMachine &machine) {
    std::string_view rest = line;
    const std::string_view word = take_word(rest);
    if (word.empty() || word.front() == '#')
        return;
    if (word == "processor")
        begin_processor(rest, machine);
    else if (word == "CPU" || word == "CPU:")
        begin_dumped(rest, machine);
    else
        add_answer(line, machine);
}

} // namespace

void LeafTable::set(uint32_t leaf, uint32_t subleaf, const Registers &answer) {
    answers_[{leaf, subleaf}] = answer;
}

Registers LeafTable::get(uint32_t leaf, uint32_t subleaf) const {
    const auto found = answers_.find({leaf, subleaf});
    return found == answers_.end() ? Registers() : found->second;
}

std::string to_text(const RecordedMachine &machine) {
    std::string text;
    for (size_t i = 0; i < machine.size(); ++i) {
        text += "processor " + std::to_string(i) + "\n";
        for (const auto &[where, answer] : machine[i].answers()) {
            char line[80];
            std::snprintf(line, sizeof line, "%08x %x %08x %08x %08x %08x\n", where.first,
                          where.second, answer.eax, answer.ebx, answer.ecx, answer.edx);
            text += line;
        }
    }
    return text;
}

RecordedMachine read_leaf_tables(std::istream &in) {
    RecordedMachine machine;
    size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        try {
            read_line(line, machine);
        } catch (const std::runtime_error &error) {
            throw std::runtime_error("line " + std::to_string(number) + ": " + error.what());
        }
    }
    if (machine.empty())
        throw std::runtime_error("no processor is recorded");
    return machine;
}

} // namespace machines
