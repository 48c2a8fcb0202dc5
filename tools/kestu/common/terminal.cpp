#include "common/terminal.hpp"

#include <cstdlib>
#include <cstring>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace program {
namespace {

std::string_view variable(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}

int output_width() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    const int columns = std::atoi(std::string(variable("COLUMNS")).c_str());
    return columns > 0 ? columns : 80;
}

// The first of the variables that is set decides, as for the C library.
bool locale_is_utf8() {
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if (const std::string_view locale = variable(name); !locale.empty())
            return strcasestr(locale.data(), "utf-8") || strcasestr(locale.data(), "utf8");
    return false;
}

} // namespace

Look look_of_output() {
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    return {.width = output_width(),
            .unicode = locale_is_utf8(),
            .colour = terminal && variable("NO_COLOR").empty() && variable("TERM") != "dumb"};
}

} // namespace program
