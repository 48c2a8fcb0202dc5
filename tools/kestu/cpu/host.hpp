// The host as the program shows it.
#pragma once

#include <string>

namespace program {

struct Host {
    std::string system; // description of the operating system
    int family;         // as kestu_mach_os
    int processors;
    double memory_mib;
    int pid;
    double real_time; // seconds since the epoch
    double cpu_time;  // seconds that this process has spent
};

Host read_host();

std::string host_page(const Host &host);
std::string host_json(const Host &host);

} // namespace program
