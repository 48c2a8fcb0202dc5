// `kestu find`: the files of folders, filtered by names and what they are.
#include "common/input_file.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "files/find_filters.hpp"
#include "files/folder.hpp"
#include "files/run_command.hpp"
#include "program.hpp"

#include "kestu_dir.h"
#include "kestu_lib.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>

#include <unistd.h>

namespace program {
namespace {

struct FindOptions {
    std::vector<std::string> folders = {"."};
    std::vector<std::string> include, exclude; // lists of patterns
    std::vector<std::string> command;
    FileFilter filter;
    std::optional<int> depth;
    bool recurse = false;
    bool ignore_case = false;
    bool whole_paths = false;
    bool hidden = false;
    bool nul = false;

    int deepest() const { return depth.value_or(recurse ? std::numeric_limits<int>::max() : 1); }
};

using Words = std::vector<std::string>;

const Words types = {"f", "d", "l"};

std::string joined(const std::vector<std::string> &lists) {
    return CLI::detail::join(lists, ";");
}

// The walk below one folder.
class Search {
  public:
    Search(const FindOptions &options, Outcome &outcome) : options_(options), outcome_(outcome) {}

    void run(const std::string &folder, apr_pool_t *pool);

  private:
    static kestu_error_t *visit(const char *path, void *search, apr_pool_t *) {
        return static_cast<Search *>(search)->take(path);
    }
    kestu_error_t *take(std::string path);
    kestu_error_t *take_folder(const std::string &path, const char *name);
    kestu_error_t *take_file(const std::string &path);
    bool matches(const char *text, const apr_array_header_t *patterns) const {
        return matchToCompositePattern(text, patterns, &walk_) != 0;
    }
    bool can_enter(const std::string &path, bool links_count);
    void show(const std::string &path);
    void run_command(const std::string &path);

    const FindOptions &options_;
    Outcome &outcome_;
    kestu_dir_traverse_t walk_ = {};
    std::optional<Progress> progress_;
    std::ptrdiff_t slashes_above_ = -1; // those in the paths of what the folder itself holds
    std::ptrdiff_t depth_ = 0;          // of what is taken
    bool over_ = false;
};

void Search::run(const std::string &folder, apr_pool_t *pool) {
    if (!can_enter(folder, true))
        return;
    walk_.flags = KESTU_DIR_FOLDERS | KESTU_DIR_GO_ON |
                  (options_.deepest() > 1 ? KESTU_DIR_RECURSE : 0) |
                  (options_.whole_paths ? 0 : KESTU_DIR_NAMES) |
                  (options_.ignore_case ? KESTU_DIR_CASE_BLIND : 0);
    walk_.callback = visit;
    walk_.user_data = this;
    const std::string include = joined(options_.include), exclude = joined(options_.exclude);
    // Where the paths themselves are seen, there is no need for more.
    if (isatty(STDOUT_FILENO) == 0 && options_.command.empty())
        progress_.emplace(folder, 0, "file");
    kestu_error_t *err =
        kestu_dir_traverse(folder.c_str(), include.empty() ? nullptr : include.c_str(),
                           exclude.empty() ? nullptr : exclude.c_str(), &walk_, pool);
    progress_.reset();
    outcome_.ok(err, folder);
}

kestu_error_t *Search::take(std::string path) {
    if (over_)
        return KestuDLlistStopWalking;
    const bool is_folder = path.ends_with('/');
    if (is_folder)
        path.pop_back();
    const auto slashes = std::count(path.begin(), path.end(), '/');
    if (slashes_above_ < 0)
        slashes_above_ = slashes;
    depth_ = slashes - slashes_above_ + 1;
    const char *name = path.c_str() + path.rfind('/') + 1;
    if (*name == '.' && !options_.hidden)
        return is_folder ? KestuDLlistStopWalking : nullptr;
    return is_folder ? take_folder(path, name) : take_file(path);
}

// The lists of patterns are for files; what is excluded is not entered either.
kestu_error_t *Search::take_folder(const std::string &path, const char *name) {
    const char *matched = options_.whole_paths ? path.c_str() : name;
    if (walk_.exclude && matches(matched, walk_.exclude))
        return KestuDLlistStopWalking;
    if (options_.filter.wants("d") && matches(matched, walk_.include) &&
        options_.filter.passes(path))
        show(path);
    if (over_ || depth_ >= options_.deepest() || !can_enter(path, false))
        return KestuDLlistStopWalking;
    return nullptr;
}

kestu_error_t *Search::take_file(const std::string &path) {
    if (options_.filter.passes(path))
        show(path);
    return over_ ? KestuDLlistStopWalking : nullptr;
}

bool Search::can_enter(const std::string &path, bool links_count) {
    const std::string fault = fault_of_folder(path, links_count);
    if (!fault.empty() && progress_)
        progress_->aside([&] { outcome_.fail(fault); });
    else if (!fault.empty())
        outcome_.fail(fault);
    return fault.empty();
}

// Names are shown as they are, but for control characters on a terminal.
void Search::show(const std::string &path) {
    if (!options_.command.empty())
        return run_command(path);
    const bool plain = options_.nul || isatty(STDOUT_FILENO) == 0;
    print((plain ? path : printable(path.c_str())) + (options_.nul ? '\0' : '\n'));
    if (progress_)
        progress_->advance();
    over_ = std::ferror(stdout) != 0;
}

void Search::run_command(const std::string &path) {
    const int status = run_for_path(options_.command, path);
    if (status < 0) {
        outcome_.fail(options_.command[0] + ": " + failed_to("run"));
        over_ = true;
    } else if (status > 0) {
        outcome_.fail();
    }
}

void find(const FindOptions &options, Outcome &outcome) {
    apr_pool_t *pool = nullptr;
    if (apr_status_t status = apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr)) {
        outcome.ok(kestu_error_aprwrap(status));
        return;
    }
    for (const std::string &folder : options.folders)
        Search(options, outcome).run(folder, pool);
    apr_pool_destroy(pool);
}

void add_filters(CLI::App *command, const std::shared_ptr<FindOptions> &options) {
    command
        ->add_option("--include", options->include,
                     "List only what matches one of these patterns (\"*.c;*.h\")")
        ->type_name("PATTERNS")
        ->check(pattern_list());
    command
        ->add_option("--exclude", options->exclude,
                     "Leave out what matches one of these, folders with all that they hold")
        ->type_name("PATTERNS")
        ->check(pattern_list());
    command->add_flag("--path", options->whole_paths, "Match whole paths, not names");
    command->add_flag("-i,--ignore-case", options->ignore_case, "Match letters in either case");
    command->add_flag("-H,--hidden", options->hidden, "List what begins with a dot, too");
    command
        ->add_option("-t,--type", options->filter.types,
                     "List files, folders (d) or links; more than once for several [default: "
                     "files and links]")
        ->type_name(alternatives(types))
        ->check(one_of(types));
    command
        ->add_option_function<Words>(
            "-S,--size",
            [options](const Words &sizes) {
                for (const std::string &size : sizes)
                    options->filter.sizes.push_back(*parse_size(size));
            },
            "List files of this size, of it or more (+10k), or of it or less (-2Mi)")
        ->type_name("SIZE")
        ->check(file_size());
    command
        ->add_option_function<std::string>(
            "--changed-within",
            [options](const std::string &when) {
                options->filter.changed_since = parse_time(when, std::time(nullptr));
            },
            "List what has changed in this time (10h, 3d, 2w) or since (2026-11-22)")
        ->type_name("TIME")
        ->check(point_in_time());
}

} // namespace

void add_find_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("find", "List the files and links of folders");
    auto options = std::make_shared<FindOptions>();
    command->add_option("FOLDER", options->folders, "Folders")->default_str(".");
    command->add_flag("-r,--recurse", options->recurse, "Go into subfolders");
    command->add_option("-d,--max-depth", options->depth, "Go into subfolders, to this depth")
        ->type_name("LEVELS")
        ->check(whole_number(1, std::numeric_limits<int>::max()));
    add_filters(command, options);
    CLI::Option *nul = command->add_flag("-0,--print0", options->nul,
                                         "End each path with a zero byte, not with a newline");
    command
        ->add_option("-x,--exec", options->command,
                     "Run a command, to the end or \";\", for each instead, with its path for {}")
        ->type_name("COMMAND...")
        ->expected(1, -1)
        ->excludes(nul);
    command->callback([options, &outcome] { find(*options, outcome); });
}

} // namespace program
