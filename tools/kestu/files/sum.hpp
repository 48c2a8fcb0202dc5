// What `kestu sum` is asked for.
#pragma once

#include "files/checksum.hpp"
#include "program.hpp"

#include <optional>
#include <string>
#include <vector>

namespace program {

struct SumOptions {
    std::vector<std::string> paths;
    std::optional<SumKind> kind;
    int threads = 1;
    bool check = false;
    bool recurse = false;
    // How sums are printed.
    bool tagged = false;
    bool nul = false;
    // What checking tells and takes.
    bool status_only = false;
    bool quiet = false;
    bool strict = false;
    bool ignore_missing = false;
};

// Compares files with the lists of sums that the options name.
void check_sums(const SumOptions &options, Outcome &outcome);

} // namespace program
