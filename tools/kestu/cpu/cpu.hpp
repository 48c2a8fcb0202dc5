// The processor as the program shows it.
#pragma once

#include "kestu_cpu.h"
#include "kestu_cpu_features.h"

#include "common/terminal.hpp"

#include <span>
#include <string>
#include <vector>

namespace program {

struct Named {
    std::string name;
    std::string value;
};

// The record, and what the program adds to it.
struct Cpu {
    kestu_cpu_t record = {};
    std::string brand; // what the processor calls itself where the record names it by its vendor
    int left_out = 0;  // processors that could not be visited
    kestu_cpu_features_t features = {};
    uint32_t physical_bits = 0, linear_bits = 0;     // of addresses; 0 when unknown, as below
    uint32_t base_mhz = 0, max_mhz = 0, bus_mhz = 0; // as designed
    double counter_mhz = 0;                          // of the time-stamp counter
    std::string hypervisor;                          // empty without one
    std::vector<Named> nodes;                        // of memory, with their processors
    std::vector<Named> vulnerabilities;              // and what the system does about them
};

// Fills all of it from the processors that this process may run on. The topology of vendors without
// rules of their own is read by AMD's, whose leaves they follow, as far as it goes.
kestu_error_t *detect(Cpu &cpu);

// The same for a recorded machine, of which neither nodes nor vulnerabilities are known.
kestu_error_t *detect_recorded(Cpu &cpu);

// What cpuid tells beyond the record; what the system tells.
void add_answers(Cpu &cpu);
void add_system(Cpu &cpu);

// What a person can do about a failed detection; empty when nothing is known.
std::string explain(int code);

struct FeatureGroup {
    std::string name;
    std::vector<std::string> features; // the names of those that are there
};

std::vector<FeatureGroup> groups_of(const kestu_cpu_features_t &features);

// Those that are there and that this process may not use.
std::vector<std::string> unusable(const kestu_cpu_features_t &features);

// A line of them as /proc/cpuinfo writes it.
std::string flags(const kestu_cpu_features_t &features);

// "data", "instruction", "unified".
const char *cache_type(const kestu_cpu_cache_t &cache);

// "32 KB", "8 MB".
std::string cache_size(const kestu_cpu_cache_t &cache);

// The page for people, and its drawing of packages, caches, cores and threads.
std::string cpu_page(const Cpu &cpu, const Look &look);
std::string topology_legend(const kestu_cpu_t &cpu);
std::string draw_topology(const kestu_cpu_t &cpu, const Look &look);

// The same for programs.
std::string cpu_json(const Cpu &cpu);

} // namespace program
