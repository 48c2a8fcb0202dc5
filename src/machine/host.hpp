// The description of the host apart from the host.
#pragma once

#include <string_view>

#include <sys/utsname.h>

namespace kestu {

// The value of the PRETTY_NAME line `line` of an os-release file: what stands between its first and
// its last double quote. Empty when the line is another one or has no such value.
std::string_view pretty_name(std::string_view line);

// The family of the system that calls itself `sysname`.
int os_family(std::string_view sysname);

// Writes the description into `buf` of `size` bytes: `pretty`, release and machine, or, when
// `pretty` is empty, what `host` tells; a null `host` means that uname failed.
void describe_os(char *buf, size_t size, std::string_view pretty, const utsname *host);

} // namespace kestu
