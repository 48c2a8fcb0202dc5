// The host, for people and for programs.
#include "cpu/host.hpp"

#include "common/json.hpp"
#include "common/text.hpp"

#include "kestu_mach.h"

#include <ctime>

namespace program {
namespace {

const char *family_name(int family) {
    switch (family) {
    case KESTU_OS_LINUX:
        return "Linux";
    case KESTU_OS_DARWIN:
        return "Darwin";
    case KESTU_OS_FREEBSD:
        return "FreeBSD";
    default:
        return "another Unix";
    }
}

std::string wall_clock(double seconds) {
    const auto whole = static_cast<time_t>(seconds);
    tm parts{};
    char date[40] = "";
    if (gmtime_r(&whole, &parts))
        std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text("%s (%.6f s since the epoch)", date, seconds);
}

} // namespace

Host read_host() {
    char name[400];
    return {.system = kestu_mach_os_name(name, sizeof name),
            .family = kestu_mach_os(),
            .processors = kestu_mach_os_cpu_num(),
            .memory_mib = kestu_mach_physmem(),
            .pid = kestu_getpid(),
            .real_time = kestu_time_real(),
            .cpu_time = kestu_time_cpu()};
}

std::string host_page(const Host &host) {
    std::string page = printable(host.system.c_str()) + "\n";
    add_field(page, "Family", text("%s (%d)", family_name(host.family), host.family));
    add_field(page, "Processors", text("%d", host.processors));
    add_field(page, "Memory", text("%'.1f MiB", host.memory_mib));
    add_field(page, "Wall clock", wall_clock(host.real_time));
    add_field(page, "Processor clock", text("%.2f s spent by this process", host.cpu_time));
    add_field(page, "Process", text("%d", host.pid));
    return page;
}

std::string host_json(const Host &host) {
    const Json json = {{"operating_system", host.system},
                       {"os_family", host.family},
                       {"processors", host.processors},
                       {"memory_mib", host.memory_mib},
                       {"clocks", {{"real", host.real_time}, {"cpu", host.cpu_time}}},
                       {"pid", host.pid}};
    return document(json);
}

} // namespace program
