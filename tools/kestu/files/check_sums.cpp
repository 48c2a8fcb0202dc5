// Checking files against lists of sums.
#include "common/input_file.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "files/sum.hpp"
#include "files/sum_line.hpp"
#include "files/summing.hpp"

#include <fstream>
#include <iostream>

#include <sys/stat.h>

namespace program {
namespace {

// What a line of a list says; nothing when it is no sum of the kind that is wanted.
std::optional<SumLine> sum_in(const std::string &line, const SumOptions &options) {
    auto parsed = parse_sum_line(line);
    return parsed && parsed->kind == options.kind.value_or(parsed->kind) ? parsed : std::nullopt;
}

// The next line that is neither empty nor a remark.
bool next_line(std::istream &list, std::string &line) {
    while (std::getline(list, line)) {
        if (line.ends_with('\r'))
            line.pop_back();
        if (!line.empty() && line[0] != '#')
            return true;
    }
    return false;
}

// The bytes of the files in a list, which is read for them alone, and 0 when they cannot be told.
unsigned long long size_of_list(const std::string &path, const SumOptions &options) {
    struct stat state;
    if (stat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode))
        return 0;
    unsigned long long total = 0;
    std::ifstream list(path, std::ios::binary);
    for (std::string line; next_line(list, line);)
        if (const auto sum = sum_in(line, options)) {
            const auto size = size_of_file(sum->name);
            if (!size)
                return 0;
            total += *size;
        }
    return total;
}

class Check {
  public:
    Check(const SumOptions &options, Outcome &outcome)
        : options_(options), outcome_(outcome), progress_("kestu sum", total(options), "byte"),
          summing_(static_cast<unsigned>(options.threads), progress_) {}

    void list(const std::string &path);

  private:
    static unsigned long long total(const SumOptions &options) {
        unsigned long long bytes = 0;
        for (const std::string &path : options.paths)
            bytes += size_of_list(path, options);
        return bytes;
    }
    void lines(std::istream &list, const std::string &name);
    void compare(const SumLine &line, const FileSum &sum);
    void tell(const std::string &name, const std::string &verdict);
    void report(const std::string &list);
    void warn(unsigned long long count, const char *one, const char *many) const;

    const SumOptions &options_;
    Outcome &outcome_;
    const Look look_ = look_of_output();
    Progress progress_;
    // What checking a list has come to.
    struct Counts {
        unsigned long long checked = 0;
        unsigned long long malformed = 0;
        unsigned long long unreadable = 0;
        unsigned long long missing = 0; // and not asked for
        unsigned long long different = 0;
    } counts_;
    Summing summing_;
};

void Check::list(const std::string &path) {
    if (path == "-")
        return lines(std::cin, name_of_input(path));
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return outcome_.fail(path + ": " + failed_to("open"));
    lines(file, path);
}

void Check::lines(std::istream &list, const std::string &name) {
    counts_ = {};
    for (std::string line; next_line(list, line);) {
        const auto sum = sum_in(line, options_);
        counts_.checked += sum ? 1 : 0;
        counts_.malformed += sum ? 0 : 1;
        if (sum)
            summing_.add(sum->name, sum->kind,
                         [this, sum](const FileSum &found) { compare(*sum, found); });
    }
    const bool failed = list.bad();
    const std::string fault = failed ? failed_to("read") : "";
    summing_.finish();
    if (failed)
        return outcome_.fail(name + ": " + fault);
    progress_.aside([&] { report(name); });
}

void Check::compare(const SumLine &line, const FileSum &sum) {
    if (sum.digits == line.digits) {
        if (!options_.quiet)
            tell(line.name, reassuring("OK", look_));
    } else if (sum.fault.empty()) {
        ++counts_.different;
        tell(line.name, alarming("FAILED", look_));
    } else if (sum.is_missing && options_.ignore_missing) {
        ++counts_.missing;
    } else {
        ++counts_.unreadable;
        progress_.aside([&] { outcome_.fail(line.name + ": " + sum.fault); });
        tell(line.name, alarming("FAILED open or read", look_));
    }
}

void Check::tell(const std::string &name, const std::string &verdict) {
    if (!options_.status_only)
        progress_.aside([&] { print(checked_name(name) + ": " + verdict + "\n"); });
}

void Check::warn(unsigned long long count, const char *one, const char *many) const {
    if (count > 0 && !options_.status_only)
        say("WARNING: " + text("%llu %s", count, count == 1 ? one : many));
}

void Check::report(const std::string &list) {
    if (counts_.checked == 0)
        return outcome_.fail(list + ": no properly formatted checksum lines found");
    warn(counts_.malformed, "line is improperly formatted", "lines are improperly formatted");
    warn(counts_.unreadable, "listed file could not be read", "listed files could not be read");
    warn(counts_.different, "computed checksum did NOT match", "computed checksums did NOT match");
    if (counts_.checked == counts_.missing)
        return outcome_.fail(list + ": no file was verified");
    if (counts_.unreadable + counts_.different + (options_.strict ? counts_.malformed : 0) > 0)
        outcome_.fail();
}

} // namespace

void check_sums(const SumOptions &options, Outcome &outcome) {
    Check check(options, outcome);
    for (const std::string &path : options.paths)
        check.list(path);
}

} // namespace program
