// `kestu cpu` and `kestu host`
#include "common/input_file.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "cpu/cpu.hpp"
#include "cpu/host.hpp"
#include "machines/replay.hpp"
#include "program.hpp"

#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

namespace program {
namespace {

struct CpuOptions {
    std::string file;
    bool json = false;
    bool measure = false;
    bool ascii = false;
    int width = 0;
};

std::optional<machines::RecordedMachine> load(const std::string &path, Outcome &outcome) {
    errno = 0;
    std::ifstream file(path);
    std::istream &in = path == "-" ? std::cin : file;
    std::string failure;
    try {
        machines::RecordedMachine machine = machines::read_leaf_tables(in);
        if (!in.bad())
            return machine;
    } catch (const std::runtime_error &error) {
        failure = error.what();
    }
    // A file that cannot be opened or read looks like an empty one.
    if (&in == &file && !file.is_open())
        failure = failed_to("open");
    else if (in.bad())
        failure = failed_to("read");
    outcome.fail(name_of_input(path) + ": " + failure);
    return std::nullopt;
}

// Prints what is known of the processor, or why nothing is and what to do about it.
void show(const CpuOptions &options, Outcome &outcome) {
    const auto cpu = std::make_unique<Cpu>();
    cpu->record.measure = options.measure;
    kestu_error_t *err = detect(*cpu);
    const int code = err ? err->code : 0;
    if (!outcome.ok(err, name_of_input(options.file))) {
        if (const std::string help = explain(code); !help.empty())
            outcome.fail(help);
        return;
    }
    Look look = look_of_output();
    look.unicode = look.unicode && !options.ascii;
    look.width = options.width > 0 ? options.width : look.width;
    print(options.json ? cpu_json(*cpu) : cpu_page(*cpu, look));
}

void run_cpu(const CpuOptions &options, Outcome &outcome) {
    if (options.file.empty())
        return show(options, outcome);
    const auto machine = load(options.file, outcome);
    if (!machine)
        return;
    const machines::Replay replay(*machine);
    show(options, outcome);
}

void add_cpu(CLI::App &app, Outcome &outcome) {
    CLI::App *command = app.add_subcommand("cpu", "Describe the processor and draw its layout");
    auto options = std::make_shared<CpuOptions>();
    command->add_flag("--json", options->json, "Print JSON");
    CLI::Option *measure =
        command->add_flag("--measure", options->measure, "Measure the clock rate");
    command
        ->add_option("--from", options->file,
                     "Describe a recorded machine instead; - is standard input")
        ->type_name("FILE")
        ->excludes(measure);
    command
        ->add_option("--width", options->width,
                     "Columns of the page, 40 to 1000 [default: the terminal's width]")
        ->type_name("COLUMNS")
        ->check(whole_number(40, 1000));
    command->add_flag("--ascii", options->ascii, "Draw with ASCII characters");
    command->callback([options, &outcome] { run_cpu(*options, outcome); });
}

void add_host(CLI::App &app) {
    CLI::App *command = app.add_subcommand("host", "Describe the operating system and clocks");
    auto json = std::make_shared<bool>(false);
    command->add_flag("--json", *json, "Print JSON");
    command->callback([json] { print(*json ? host_json(read_host()) : host_page(read_host())); });
}

} // namespace

void add_cpu_commands(CLI::App &app, Outcome &outcome) {
    add_cpu(app, outcome);
    add_host(app);
}

} // namespace program
