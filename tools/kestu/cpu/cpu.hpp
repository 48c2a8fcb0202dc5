// The processor as the program shows it.
#pragma once

#include "kestu_cpu.h"

#include "common/terminal.hpp"

#include <span>
#include <string>
#include <vector>

namespace program {

// The record, and what the program adds to it.
struct Cpu {
    kestu_cpu_t record = {};
    std::string brand; // what the processor calls itself where the record names it by its vendor
};

// As kestu_cpu_detect. The topology of vendors without rules of their own is read by AMD's, whose
// leaves they follow, as far as it goes.
kestu_error_t *detect(Cpu &cpu);

// What a person can do about a failed detection; empty when nothing is known.
std::string explain(int code);

struct FeatureGroup {
    std::string name;
    std::vector<std::string> features; // the names of those that are there
};

std::vector<FeatureGroup> features_of(const kestu_cpu_id_t &id);

// "data", "instruction", "unified".
const char *cache_type(const kestu_cpu_cache_t &cache);

// "32 KB", "8 MB".
std::string cache_size(const kestu_cpu_cache_t &cache);

// The page for people, and its drawing of packages, caches, cores and threads.
std::string cpu_page(const Cpu &cpu, const Look &look);
std::string draw_topology(const kestu_cpu_t &cpu, const Look &look);

// The same for programs.
std::string cpu_json(const Cpu &cpu);

} // namespace program
