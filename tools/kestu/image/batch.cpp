#include "image/batch.hpp"

#include "common/input_file.hpp"
#include "common/values.hpp"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>

namespace program {
namespace {

bool read_names(std::istream &in, char end, std::vector<std::string> &names) {
    for (std::string name; std::getline(in, name, end);)
        if (!name.empty())
            names.push_back(name);
    return !in.bad();
}

} // namespace

unsigned Batch::workers() const {
    return threads > 0 ? threads : std::max(std::thread::hardware_concurrency(), 1U);
}

bool gather_paths(Batch &batch, Outcome &outcome) {
    const char end = batch.zeros ? '\0' : '\n';
    if (batch.list == "-") {
        if (!read_names(std::cin, end, batch.paths))
            outcome.fail("standard input cannot be read");
    } else if (!batch.list.empty()) {
        std::ifstream in(batch.list, std::ios::binary);
        if (!in || !read_names(in, end, batch.paths))
            outcome.ok(in_words(failed_to("read")), batch.list);
    }
    if (batch.paths.empty() && batch.list.empty())
        throw CLI::RequiredError("FILE");
    return !batch.paths.empty();
}

void add_batch_options(CLI::App &command, Batch &batch) {
    command.add_option("FILE", batch.paths, "Pictures: TIFF or PNG; - is standard input");
    command
        .add_option("--files-from", batch.list,
                    "More files, named in this one line by line; - is standard input")
        ->type_name("FILE");
    command.add_flag("-0,--null", batch.zeros, "Names in the list end with zero bytes");
    command
        .add_option("-j,--threads", batch.threads,
                    "Work on so many at the same time; 0: one for each processor")
        ->capture_default_str()
        ->type_name("N")
        ->check(whole_number(0, 1024));
}

} // namespace program
