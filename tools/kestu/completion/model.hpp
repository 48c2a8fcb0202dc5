// What may be completed, as the parser knows it.
#pragma once

#include "common/parser.hpp"

#include <string>
#include <vector>

namespace program {

// What a value is: nothing that can be completed, one of some words, a file, a folder, or a command
// of the system with all that belongs to it.
struct CompletedValue {
    enum Kind { none, other, words, files, folders, command } kind = none;
    std::string name;
    std::vector<std::string> choices; // of words
};

struct CompletedOption {
    std::vector<std::string> shorts, longs; // without dashes
    std::string description;
    CompletedValue value;
    bool repeats = false;
};

// A command, with the commands that may follow it.
struct CompletedCommand {
    std::string path; // "kestu image info"
    std::string name, description;
    std::vector<CompletedCommand> commands;
    std::vector<CompletedOption> options;
    CompletedValue argument; // the last one, which may stand for several
};

// Below "kestu help" stand the names of all commands.
CompletedCommand completed(const CLI::App &app);

// `root` and all below it, each before what follows it.
std::vector<const CompletedCommand *> all_of(const CompletedCommand &root);

// The names of an option, with their dashes.
std::vector<std::string> names_of(const CompletedOption &option);

// `text` between single quotes, for the shells that end them at any other.
std::string in_quotes(const std::string &text);

std::string joined(const std::vector<std::string> &words);

// The scripts.
std::string bash_completion(const CompletedCommand &root);
std::string zsh_completion(const CompletedCommand &root);
std::string fish_completion(const CompletedCommand &root);

} // namespace program
