// What `kestu find` is asked for.
#pragma once

#include "common/parser.hpp"

#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/types.h>

namespace program {

// Accepts lists of patterns that mean what they seem to: none is empty, and no bracket or backslash
// is left alone.
CLI::Validator pattern_list();

// "512", "+10k", "-2Mi": the size of a file, or the least or largest one.
struct SizeRange {
    off_t least = 0, most = 0;
};
std::optional<SizeRange> parse_size(const std::string &given);
CLI::Validator file_size();

// The beginning of "90s", "15min", "10h", "3d" or "2w" before `now`, or of a day or second that is
// written "2026-11-22" or "2026-11-22 18:30:00".
std::optional<time_t> parse_time(const std::string &given, time_t now);
CLI::Validator point_in_time();

// What a file has to be beside what its name tells.
struct FileFilter {
    std::vector<std::string> types = {"f", "l"}; // "d" for folders
    std::vector<SizeRange> sizes;                // all of them
    std::optional<time_t> changed_since;

    bool wants(const std::string &type) const;
    bool passes(const std::string &path) const;
};

} // namespace program
