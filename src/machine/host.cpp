// What the host is.
#include "machine/host.hpp"

#include "base/kept_errno.hpp"
#include "kestu_format.h"
#include "kestu_mach.h"
#include "kestu_str.h"

#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace kestu {
namespace {

// Longer lines are cut.
constexpr size_t line_size = 100;

} // namespace

std::string_view pretty_name(std::string_view line) {
    if (line.find("PRETTY_NAME") == line.npos)
        return {};
    const size_t first = line.find('"');
    const size_t last = line.rfind('"');
    if (first == last)
        return {};
    return {line.data() + first + 1, last - first - 1};
}

int os_family(std::string_view sysname) {
    if (sysname == "Linux")
        return KESTU_OS_LINUX;
    if (sysname == "Darwin")
        return KESTU_OS_DARWIN;
    if (sysname == "FreeBSD")
        return KESTU_OS_FREEBSD;
    return KESTU_OS_UNIX;
}

// Kept: without a pretty name the version comes before the release. Relied on by: who parses this.
void describe_os(char *buf, size_t size, std::string_view pretty, const utsname *host) {
    const int length = static_cast<int>(pretty.size());
    if (!pretty.empty() && host)
        rpl_snprintf(buf, size, "%.*s, %s, %s", length, pretty.data(), host->release,
                     host->machine);
    else if (!pretty.empty())
        rpl_snprintf(buf, size, "%.*s", length, pretty.data());
    else if (host)
        rpl_snprintf(buf, size, "%s, %s, %s, %s", host->sysname, host->version, host->release,
                     host->machine);
    else
        kestu_str_strlcpy(buf, "Unknown Linux-compatible OS", size);
}

} // namespace kestu

using namespace kestu;

int kestu_mach_os(void) {
    const KeptErrno kept;
    utsname host;
    return uname(&host) == 0 ? os_family(host.sysname) : KESTU_OS_UNIX;
}

char *kestu_mach_os_name(char *buf, int size) {
    if (size <= 0)
        return buf;
    const KeptErrno kept;
    char line[line_size];
    std::string_view pretty;
    if (FILE *release = std::fopen("/etc/os-release", "r")) {
        while (std::fgets(line, sizeof line, release))
            if (std::strstr(line, "PRETTY_NAME")) {
                pretty = pretty_name(line);
                break;
            }
        std::fclose(release);
    }
    std::memset(buf, 0, static_cast<size_t>(size));
    utsname host;
    describe_os(buf, static_cast<size_t>(size), pretty, uname(&host) == 0 ? &host : nullptr);
    return buf;
}

[[gnu::noinline]] int kestu_mach_os_cpu_num(void) {
    const KeptErrno kept;
    const long count = sysconf(_SC_NPROCESSORS_CONF);
    return count == -1 ? 1 : static_cast<int>(count);
}

double kestu_mach_physmem(void) {
    const KeptErrno kept;
    const long page_size = sysconf(_SC_PAGESIZE);
    const long pages = sysconf(_SC_PHYS_PAGES);
    if (page_size == -1 || pages == -1)
        return 0.0;
    return static_cast<double>(page_size) * static_cast<double>(pages) * 0x1p-20;
}

int kestu_getpid(void) {
    return getpid();
}
