// `kestu image info`: what files are, page by page.
#include "common/fitted.hpp"
#include "common/input_file.hpp"
#include "common/json.hpp"
#include "common/progress.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "image/batch.hpp"
#include "image/commands.hpp"
#include "image/counts.hpp"
#include "image/describe.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace program {
namespace {

struct InfoOptions {
    Batch batch;
    uint32_t page = 0; // 0: every one
    bool json = false, lines = false, tags = false;
    int width = 0;
};

// One file: a page for people, an array of pages for programs, and why it ended early.
struct Described {
    std::string page;
    Json json = Json::array();
    kestu_error_t *err = nullptr;
};

std::string tags_of(kestu_tiff_reader_t *reader, Json &json) {
    struct Baton {
        std::string page;
        Json &json;
    } baton = {"", json};
    const auto add = [](int tag, const char *name, const char *value, void *data) {
        auto &[page, list] = *static_cast<Baton *>(data);
        page += text("    %5d %-26s %s\n", tag, name, value);
        list.push_back({{"tag", tag}, {"name", name}, {"value", value}});
        return 0;
    };
    kestu_tiff_tags(reader, add, &baton);
    return baton.page;
}

kestu_error_t *describe_page(const std::string &name, Source &source, const std::string &readable,
                             const InfoOptions &options, Described &out) {
    Counts counts;
    Selection all;
    if (kestu_error_t *err = all.open({}, source.form()))
        return err;
    if (kestu_error_t *err = counts.measure(source, all))
        return err;
    Json page = json_of_page(name, source, counts);
    std::string tags;
    if (options.tags && source.tiff())
        tags = tags_of(source.tiff(), page["tags"] = Json::array());
    if (out.page.empty())
        out.page = printable(name.c_str()) + "\n";
    out.page += page_of(source, readable, counts);
    if (!tags.empty())
        out.page += "  Tags\n" + tags;
    out.json.push_back(page);
    return nullptr;
}

Described describe_file(const std::string &path, const InfoOptions &options) {
    Described described;
    const std::string name = name_of_input(path);
    described.err = read_file(path, [&](const char *readable) -> kestu_error_t * {
        uint32_t page = std::max(options.page, 1U);
        uint32_t last = page;
        for (; page <= last; ++page) {
            kestu_error_t *err = with_readable(readable, page, [&](Source &source) {
                if (options.page == 0 && source.info())
                    last = source.info()->pages;
                return describe_page(name, source, readable, options, described);
            });
            if (err)
                return err;
        }
        return nullptr;
    });
    return described;
}

void info(InfoOptions &options, Outcome &outcome) {
    if (!gather_paths(options.batch, outcome))
        return;
    const auto &paths = options.batch.paths;
    Progress progress("kestu image info", paths.size());
    Json array = Json::array();
    const char *separator = "";
    in_order<Described>(
        paths.size(), options.batch.workers(),
        [&](size_t i) { return describe_file(paths[i], options); },
        [&](size_t i, Described described) {
            if (options.lines)
                for (const Json &page : described.json)
                    progress.aside([&] { print(json_line(page)); });
            else if (options.json)
                array.insert(array.end(), described.json.begin(), described.json.end());
            else if (!described.page.empty())
                progress.aside([&] {
                    print(std::exchange(separator, "\n") +
                          fitted(described.page, page_width(options.width)));
                });
            progress.ok(described.err, name_of_input(paths[i]), outcome);
            progress.advance();
        });
    if (options.json && !options.lines)
        progress.aside([&] { print(document(array)); });
}

} // namespace

void add_info(CLI::App &image, Outcome &outcome) {
    CLI::App *command = image.add_subcommand("info", "Describe pictures, page by page");
    auto options = std::make_shared<InfoOptions>();
    add_batch_options(*command, options->batch);
    add_page_option(*command, options->page, "Only this page [default: every one]");
    command->add_flag("--tags", options->tags, "List all tags of TIFF files too");
    command->add_flag("--json", options->json, "Print a JSON array with an object for each page");
    command->add_flag("--json-lines", options->lines, "Print a JSON object a line for each page");
    add_page_width(*command, options->width);
    command->callback([options, &outcome] { info(*options, outcome); });
}

} // namespace program
