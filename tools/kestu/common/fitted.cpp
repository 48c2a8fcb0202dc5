#include "common/fitted.hpp"

#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/values.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <sstream>

#include <unistd.h>

namespace program {
namespace {

bool begins_character(char c) {
    return (c & 0xC0) != 0x80;
}

// The bytes of the first `columns` characters.
size_t bytes_of(const std::string &line, size_t columns) {
    size_t at = 0;
    for (; at < line.size(); ++at)
        if (begins_character(line[at]) && columns-- == 0)
            break;
    return at;
}

bool is_field(const std::string &line) {
    return line.size() > page_margin && line.starts_with("  ") && line[page_margin - 1] == ' ' &&
           line[page_margin] != ' ';
}

void add_fitted(std::string &page, std::string line, size_t width) {
    const size_t indent = is_field(line) && width > page_margin + 10 ? page_margin : 4;
    for (;;) {
        size_t end = bytes_of(line, width);
        if (end == line.size())
            break;
        const size_t blank = line.find_last_of(' ', end);
        size_t next = end;
        if (blank != std::string::npos && line.find_first_not_of(' ') < blank)
            end = blank, next = line.find_first_not_of(' ', blank);
        if (next == std::string::npos)
            break;
        page += line.substr(0, line.find_last_not_of(' ', end - 1) + 1) + "\n";
        line = std::string(indent, ' ') + line.substr(next);
    }
    page += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

} // namespace

std::string fitted(const std::string &page, int width) {
    if (width <= 0)
        return page;
    std::string result;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);)
        add_fitted(result, line, static_cast<size_t>(std::max(width, 10)));
    return result;
}

int page_width(int asked) {
    if (asked > 0)
        return asked;
    return isatty(STDOUT_FILENO) ? look_of_output().width : 0;
}

void add_page_width(CLI::App &command, int &width) {
    command
        .add_option("--width", width,
                    "Columns of the page, 40 to 1000 [default: the terminal's width]")
        ->type_name("COLUMNS")
        ->check(whole_number(40, 1000));
}

} // namespace program
