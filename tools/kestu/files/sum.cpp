// `kestu sum`: checksums of files, printed or compared with those in lists.
#include "files/sum.hpp"

#include "common/input_file.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "files/folder.hpp"
#include "files/sum_line.hpp"
#include "files/summing.hpp"

#include "kestu_dir.h"
#include "kestu_lib.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>
#include <memory>
#include <thread>

#include <sys/stat.h>

namespace program {
namespace {

using Paths = std::vector<std::string>;

bool is_folder(const std::string &path) {
    struct stat state;
    return stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

bool is_link(const char *path) {
    struct stat state;
    return lstat(path, &state) == 0 && S_ISLNK(state.st_mode);
}

// The files below a folder, sorted, so that two lists can be compared. Links are left out: what
// they lead to has names of its own.
struct Collection {
    Paths files;
    Outcome &outcome;

    static kestu_error_t *add(const char *path, void *collection, apr_pool_t *) {
        auto &[files, outcome] = *static_cast<Collection *>(collection);
        const size_t size = std::strlen(path);
        if (path[size - 1] != '/') {
            if (!is_link(path))
                files.emplace_back(path);
            return nullptr;
        }
        const std::string fault = fault_of_folder(std::string(path, size - 1), false);
        if (fault.empty())
            return nullptr;
        outcome.fail(fault);
        return KestuDLlistStopWalking;
    }
};

Paths files_below(const std::string &folder, apr_pool_t *pool, Outcome &outcome) {
    Collection found{{}, outcome};
    kestu_dir_traverse_t walk = {};
    walk.flags = KESTU_DIR_RECURSE | KESTU_DIR_FOLDERS | KESTU_DIR_GO_ON;
    walk.callback = Collection::add;
    walk.user_data = &found;
    outcome.ok(kestu_dir_traverse(folder.c_str(), nullptr, nullptr, &walk, pool), folder);
    std::sort(found.files.begin(), found.files.end());
    return found.files;
}

Paths with_files_below(const Paths &paths, Outcome &outcome) {
    apr_pool_t *pool = nullptr;
    if (apr_status_t status = apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr)) {
        outcome.ok(kestu_error_aprwrap(status));
        return {};
    }
    Paths all;
    for (const std::string &path : paths) {
        const Paths found = is_folder(path) ? files_below(path, pool, outcome) : Paths{path};
        all.insert(all.end(), found.begin(), found.end());
    }
    apr_pool_destroy(pool);
    return all;
}

// 0 when the size of one is not known.
unsigned long long total_size(const Paths &paths) {
    unsigned long long total = 0;
    for (const std::string &path : paths) {
        const auto size = size_of_file(path);
        if (!size)
            return 0;
        total += *size;
    }
    return total;
}

void print_sums(const SumOptions &options, Outcome &outcome) {
    const Paths paths = options.recurse ? with_files_below(options.paths, outcome) : options.paths;
    const SumKind kind = options.kind.value_or(SumKind::sha1);
    Progress progress("kestu sum", total_size(paths), "byte");
    const auto show = [&](const std::string &path, const FileSum &sum) {
        if (!sum.fault.empty())
            return outcome.fail(name_of_input(path) + ": " + sum.fault);
        const SumLine line{kind, sum.digits, path};
        print(options.nul ? format_plain_sum_line(line, options.tagged) + '\0'
                          : format_sum_line(line, options.tagged) + '\n');
    };
    Summing summing(static_cast<unsigned>(options.threads), progress);
    for (const std::string &path : paths)
        summing.add(path, kind, [&progress, &show, path](const FileSum &sum) {
            progress.aside([&] { show(path, sum); });
        });
    summing.finish();
}

void sum(SumOptions &options, Outcome &outcome) {
    if (options.paths.empty())
        options.paths.emplace_back("-");
    if (options.threads == 0)
        options.threads = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    options.check ? check_sums(options, outcome) : print_sums(options, outcome);
}

void add_kinds(CLI::App *command, const std::shared_ptr<SumOptions> &options) {
    std::vector<CLI::Option *> kinds;
    for (const SumName &sum : sum_names) {
        CLI::Option *kind = command->add_flag_callback(
            sum.option, [options, &sum] { options->kind = sum.kind; }, sum.description);
        for (CLI::Option *other : kinds)
            kind->excludes(other);
        kinds.push_back(kind);
    }
}

} // namespace

void add_sum_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("sum", "Print or check checksums of files");
    auto options = std::make_shared<SumOptions>();
    command->add_option("FILE", options->paths, "Files; - is standard input, as without any");
    add_kinds(command, options);
    CLI::Option *check =
        command->add_flag("-c,--check", options->check, "Read sums from the files and check them");
    const auto printing = [&](const char *name, bool &option, const char *description) {
        command->add_flag(name, option, description)->excludes(check);
    };
    const auto checking = [&](const char *name, bool &option, const char *description) {
        command->add_flag(name, option, description)->needs(check);
    };
    printing("-r,--recurse", options->recurse, "Sum the files below folders, too");
    printing("--tag", options->tagged, "Print lines as \"SHA1 (FILE) = SUM\"");
    printing("-z,--zero", options->nul, "End lines with a zero byte, and escape no names");
    checking("--quiet", options->quiet, "With -c: do not print OK for each file that matches");
    checking("--status", options->status_only, "With -c: print nothing but errors");
    checking("--strict", options->strict, "With -c: fail for lines that are improperly formatted");
    checking("--ignore-missing", options->ignore_missing,
             "With -c: leave out files that are not there");
    command
        ->add_option("-j,--threads", options->threads,
                     "Sum so many files at the same time; 0: one for each processor")
        ->capture_default_str()
        ->type_name("N")
        ->check(whole_number(0, 256));
    command->callback([options, &outcome] { sum(*options, outcome); });
}

} // namespace program
