// `kestu sum`: checksums of files, printed or compared with those in lists.
#include "common/text.hpp"
#include "files/sum_line.hpp"
#include "program.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

namespace program {
namespace {

struct SumOptions {
    std::vector<std::string> paths;
    std::optional<SumKind> kind;
    bool check = false;
    bool quiet = false;
};

std::string reason() {
    return std::strerror(errno);
}

void print_sums(const SumOptions &options, Outcome &outcome) {
    for (const std::string &path : options.paths) {
        if (const auto digits = sum_of_file(path, options.kind.value_or(SumKind::sha1)))
            std::puts(format_sum_line(*digits, path).c_str());
        else
            outcome.fail(printable(path.c_str()) + ": " + reason());
    }
}

// What checking one list has come to.
struct Counts {
    unsigned long long checked = 0;
    unsigned long long malformed = 0;
    unsigned long long unreadable = 0;
    unsigned long long different = 0;
};

void check_line(const SumLine &line, bool quiet, Counts &counts, Outcome &outcome) {
    const std::string name = checked_name(line.name);
    ++counts.checked;
    const auto digits = sum_of_file(line.name, line.kind);
    if (!digits) {
        outcome.fail(printable(line.name.c_str()) + ": " + reason());
        ++counts.unreadable;
        std::printf("%s: FAILED open or read\n", name.c_str());
    } else if (*digits != line.digits) {
        ++counts.different;
        std::printf("%s: FAILED\n", name.c_str());
    } else if (!quiet) {
        std::printf("%s: OK\n", name.c_str());
    }
}

void warn(unsigned long long count, const char *one, const char *many) {
    if (count > 0)
        std::fprintf(stderr, "kestu: WARNING: %s\n",
                     text("%llu %s", count, count == 1 ? one : many).c_str());
}

void report(const Counts &counts, const std::string &list, Outcome &outcome) {
    std::fflush(stdout);
    if (counts.checked == 0)
        return outcome.fail(printable(list.c_str()) +
                            ": no properly formatted checksum lines found");
    warn(counts.malformed, "line is improperly formatted", "lines are improperly formatted");
    warn(counts.unreadable, "listed file could not be read", "listed files could not be read");
    warn(counts.different, "computed checksum did NOT match", "computed checksums did NOT match");
    if (counts.unreadable + counts.different > 0)
        outcome.fail();
}

void check_list(std::istream &list, const std::string &path, const SumOptions &options,
                Outcome &outcome) {
    Counts counts;
    for (std::string line; std::getline(list, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (line.empty() || line[0] == '#')
            continue;
        const auto parsed = parse_sum_line(line);
        if (parsed && parsed->kind == options.kind.value_or(parsed->kind))
            check_line(*parsed, options.quiet, counts, outcome);
        else
            ++counts.malformed;
    }
    if (list.bad())
        return outcome.fail(printable(path.c_str()) + ": " + reason());
    report(counts, path, outcome);
}

void check_lists(const SumOptions &options, Outcome &outcome) {
    for (const std::string &path : options.paths) {
        if (path == "-") {
            check_list(std::cin, "standard input", options, outcome);
            continue;
        }
        std::ifstream list(path, std::ios::binary);
        if (!list)
            outcome.fail(printable(path.c_str()) + ": " + reason());
        else
            check_list(list, path, options, outcome);
    }
}

} // namespace

void add_sum_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("sum", "Print or check checksums of files");
    auto options = std::make_shared<SumOptions>();
    command->add_option("FILE", options->paths, "Files; - is standard input, as without any");
    std::vector<CLI::Option *> kinds;
    for (const SumName &sum : sum_names) {
        CLI::Option *kind = command->add_flag_callback(
            sum.option, [options, &sum] { options->kind = sum.kind; }, sum.description);
        for (CLI::Option *other : kinds)
            kind->excludes(other);
        kinds.push_back(kind);
    }
    command->add_flag("-c,--check", options->check, "Read sums from the files and check them");
    command->add_flag("--quiet", options->quiet, "Do not print OK for each file that matches");
    command->callback([options, &outcome] {
        if (options->paths.empty())
            options->paths.emplace_back("-");
        options->check ? check_lists(*options, outcome) : print_sums(*options, outcome);
    });
}

} // namespace program
