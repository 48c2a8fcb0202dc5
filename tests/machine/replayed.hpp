// Machines that are not there.
#pragma once

#include "kestu_cpu.h"

#include "machines/leaf_table.hpp"

#include <memory>
#include <string>
#include <string_view>

namespace kestu::test {

using machines::LeafTable;
using machines::RecordedMachine;

// A machine of the folder cpuid.
RecordedMachine load_machine(const std::string &name);

// Identification by the vendor of twelve characters, with `highest_leaf` leaves.
void set_vendor(LeafTable &table, std::string_view vendor, uint32_t highest_leaf);

// The 48 characters of the brand, and leaf 0x80000000 for them.
void set_brand(LeafTable &table, std::string_view brand);

// A record of zeros: it is too large for the stack.
std::unique_ptr<kestu_cpu_t> new_record();

} // namespace kestu::test
