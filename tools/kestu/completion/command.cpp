// `kestu completion`: what shells need to complete the program's words.
#include "common/text.hpp"
#include "common/values.hpp"
#include "completion/model.hpp"
#include "program.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace program {
namespace {

const std::vector<std::string> shells = {"bash", "zsh", "fish"};

std::string script_for(const std::string &shell, const CompletedCommand &root) {
    if (shell == "bash")
        return bash_completion(root);
    return shell == "zsh" ? zsh_completion(root) : fish_completion(root);
}

} // namespace

void add_completion_command(CLI::App &app, Outcome &) {
    CLI::App *command = app.add_subcommand("completion", "Print the completions for a shell");
    auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->type_name(alternatives(shells))
        ->check(one_of(shells));
    command->callback([shell, &app] { print(script_for(*shell, completed(app))); });
}

} // namespace program
