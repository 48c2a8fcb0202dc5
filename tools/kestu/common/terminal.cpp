#include "common/terminal.hpp"

#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace program {
namespace {

std::optional<bool> chosen_colour;

std::string_view variable(const char *name) {
    const char *value = std::getenv(name);
    return value ? value : "";
}

int width_of(int stream) {
    winsize size{};
    if (ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
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

bool shows_colour(int stream) {
    return isatty(stream) != 0 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

std::string between(const char *code, const std::string &what, const Look &look) {
    return look.colour ? code + what + "\033[0m" : what;
}

} // namespace

Look look_of(int stream) {
    return {.width = width_of(stream),
            .unicode = locale_is_utf8(),
            .colour = chosen_colour ? *chosen_colour : shows_colour(stream)};
}

Look look_of_output() {
    return look_of(STDOUT_FILENO);
}

void choose_colour(const std::string &when) {
    chosen_colour = when == "auto" ? std::nullopt : std::optional(when == "always");
}

std::string bold(const std::string &what, const Look &look) {
    return between("\033[1m", what, look);
}

std::string alarming(const std::string &what, const Look &look) {
    return between("\033[1;31m", what, look);
}

std::string reassuring(const std::string &what, const Look &look) {
    return between("\033[32m", what, look);
}

} // namespace program
