// The lines in which sums are written down, as the usual sum tools write and read them.
#pragma once

#include "files/checksum.hpp"

namespace program {

struct SumLine {
    SumKind kind;
    std::string digits;
    std::string name;
};

// "<digits>  <name>", or "SHA1 (<name>) = <digits>" in the tagged style. A name with a backslash or
// a line break is escaped, and a backslash stands before the line then.
std::string format_sum_line(const SumLine &line, bool tagged);

// The same for lines that end with a zero byte, where no name needs an escape.
std::string format_plain_sum_line(const SumLine &line, bool tagged);

// `name` as it stands before the result of a check: escaped, with a backslash in front, only when
// it has a newline.
std::string checked_name(const std::string &name);

// Reads a line of the plain style, "<digits>  <name>" or "<digits> *<name>", or of the tagged one,
// "SHA1 (<name>) = <digits>". Nothing when it is neither.
std::optional<SumLine> parse_sum_line(std::string_view line);

} // namespace program
