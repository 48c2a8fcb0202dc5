// `kestu find`: the files of a folder, filtered by patterns.
#include "common/progress.hpp"
#include "common/text.hpp"
#include "program.hpp"

#include "kestu_dir.h"
#include "kestu_lib.h"

#include <cstdio>
#include <memory>
#include <optional>

#include <unistd.h>

namespace program {
namespace {

struct FindOptions {
    std::string folder;
    std::optional<std::string> include;
    std::optional<std::string> exclude;
    bool recurse = false;
    bool ignore_case = false;
    bool nul = false;
    Progress *progress = nullptr;
};

const char *text_or_null(const std::optional<std::string> &text) {
    return text ? text->c_str() : nullptr;
}

// Names are shown as they are, but for control characters on a terminal.
kestu_error_t *print_path(const char *path, void *user_data, apr_pool_t *) {
    const auto &options = *static_cast<const FindOptions *>(user_data);
    const bool shown = !options.nul && isatty(STDOUT_FILENO) != 0;
    std::fputs(shown ? printable(path).c_str() : path, stdout);
    std::putchar(options.nul ? '\0' : '\n');
    if (options.progress)
        options.progress->advance();
    return std::ferror(stdout) ? KestuDLlistStopWalking : nullptr;
}

void find(FindOptions &options, Outcome &outcome) {
    apr_pool_t *pool = nullptr;
    if (apr_status_t status = apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr)) {
        outcome.ok(kestu_error_aprwrap(status));
        return;
    }
    kestu_dir_traverse_t walk = {};
    walk.flags = (options.recurse ? KESTU_DIR_RECURSE : 0) |
                 (options.ignore_case ? KESTU_DIR_CASE_BLIND : 0);
    walk.callback = print_path;
    walk.user_data = &options;
    // Where the paths themselves are seen, there is no need for more.
    std::optional<Progress> progress;
    if (isatty(STDOUT_FILENO) == 0)
        options.progress = &progress.emplace(options.folder, 0, "file");
    kestu_error_t *err = kestu_dir_traverse(options.folder.c_str(), text_or_null(options.include),
                                            text_or_null(options.exclude), &walk, pool);
    progress.reset();
    outcome.ok(err);
    apr_pool_destroy(pool);
}

} // namespace

void add_find_command(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("find", "List the files and links of a folder");
    auto options = std::make_shared<FindOptions>();
    command->add_option("DIR", options->folder, "Folder")->required();
    command->add_option("--include", options->include,
                        "List only paths that match one of these patterns (\"*.c;*.h\")");
    command->add_option("--exclude", options->exclude,
                        "Leave out paths that match one of these patterns");
    command->add_flag("-r,--recurse", options->recurse, "Go into subfolders");
    command->add_flag("-i,--ignore-case", options->ignore_case, "Match letters in either case");
    command->add_flag("-0", options->nul, "End each path with a zero byte, not with a newline");
    command->callback([options, &outcome] { find(*options, outcome); });
}

} // namespace program
