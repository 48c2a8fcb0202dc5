// `kestu cpu` and `kestu host`
#include "common/fitted.hpp"
#include "common/input_file.hpp"
#include "common/new_file.hpp"
#include "common/terminal.hpp"
#include "common/text.hpp"
#include "common/values.hpp"
#include "cpu/cpu.hpp"
#include "cpu/host.hpp"
#include "machines/recording.hpp"
#include "machines/replay.hpp"
#include "program.hpp"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

namespace program {
namespace {

struct CpuOptions {
    std::string file;
    std::string recording;
    bool flags = false;
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

kestu_error_t *record(const Cpu &cpu, const std::string &path) {
    return write_new_file(path, machines::to_text(machines::record(
                                    std::span(cpu.record.processors, cpu.record.thread_count))));
}

std::string shown(const Cpu &cpu, const CpuOptions &options) {
    if (options.flags)
        return flags(cpu.features);
    if (options.json)
        return cpu_json(cpu);
    Look look = look_of_output();
    look.unicode = look.unicode && !options.ascii;
    look.width = options.width > 0 ? options.width : look.width;
    return cpu_page(cpu, look);
}

// Prints what is known of the processor, or why nothing is and what to do about it.
void show(const CpuOptions &options, Outcome &outcome) {
    const auto cpu = std::make_unique<Cpu>();
    cpu->record.measure = options.measure;
    kestu_error_t *err = options.file.empty() ? detect(*cpu) : detect_recorded(*cpu);
    const int code = err ? err->code : 0;
    if (!outcome.ok(err, name_of_input(options.file))) {
        if (const std::string help = explain(code); !help.empty())
            outcome.fail(help);
        return;
    }
    if (options.recording.empty())
        print(shown(*cpu, options));
    else
        outcome.ok(record(*cpu, options.recording), printable(options.recording.c_str()));
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
    CLI::Option *json = command->add_flag("--json", options->json, "Print JSON");
    CLI::Option *flags = command->add_flag("--flags", options->flags,
                                           "Print the features alone, as /proc/cpuinfo names them");
    flags->excludes(json);
    CLI::Option *measure =
        command->add_flag("--measure", options->measure, "Measure the clock rate");
    command
        ->add_option("--from", options->file,
                     "Describe a recorded machine instead; - is standard input")
        ->type_name("FILE")
        ->excludes(measure);
    command
        ->add_option("--record", options->recording,
                     "Write what the processors answer, for --from, and show nothing")
        ->type_name("FILE")
        ->excludes(json, flags);
    add_page_width(*command, options->width);
    command->add_flag("--ascii", options->ascii, "Draw with ASCII characters");
    command->footer(
        "A recording has a line \"processor N\" for each processor, counted from 0, and below it "
        "a line\n\"LEAF SUBLEAF EAX EBX ECX EDX\" of hexadecimal numbers for each answer of "
        "cpuid; lines\nthat begin with # say nothing. Raw dumps (cpuid -r) are read too.");
    command->callback([options, &outcome] { run_cpu(*options, outcome); });
}

void add_host(CLI::App &app) {
    struct HostOptions {
        bool json = false;
        int width = 0;
    };
    CLI::App *command = app.add_subcommand("host", "Describe the operating system and clocks");
    auto options = std::make_shared<HostOptions>();
    command->add_flag("--json", options->json, "Print JSON");
    add_page_width(*command, options->width);
    command->callback([options] {
        print(options->json ? host_json(read_host())
                            : fitted(host_page(read_host()), page_width(options->width)));
    });
}

} // namespace

void add_cpu_commands(CLI::App &app, Outcome &outcome) {
    add_cpu(app, outcome);
    add_host(app);
}

} // namespace program
