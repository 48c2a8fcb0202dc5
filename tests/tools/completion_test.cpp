// Completion by Tab, in the shells themselves.
#include "support/process.hpp"
#include "support/pty.hpp"
#include "support/test.hpp"

using namespace kestu::test;

namespace {

struct Shell {
    std::string name;
    std::vector<std::string> start;
    std::string settings; // of a prompt, and of how the completions are read
};

// The settings stand in a file .zshrc of the folder in which the shells start.
const Shell shells[] = {
    {"bash", {"bash", "--rcfile", ".zshrc", "-i"}, "PS1='ready> '; . ./completions"},
    {"zsh",
     {"zsh", "-d", "-i"},
     "unset zle_bracketed_paste; PS1='ready> '; autoload -U compinit; compinit -D; . "
     "./completions"},
    {"fish",
     {"fish", "--no-config", "-i", "-C", "source .zshrc"},
     "function fish_prompt; echo -n 'ready> '; end; source completions"},
};

} // namespace

TEST(Completion, OfCommandsOptionsAndValuesInEveryShell) {
    constexpr std::pair<const char *, const char *> cases[] = {
        {"kestu --verbose image draw circ", "kestu --verbose image draw circle |"},
        {"kestu sum --ign", "kestu sum --ignore-missing |"},
        {"kestu image info s", "kestu image info scan.tif |"},
        {"kestu find --color=ne", "kestu find --color=never |"},
        {"kestu image histogram --svg s", "kestu image histogram --svg scan.tif |"},
        {"kestu help image fu", "kestu help image fuji |"},
    };
    for (const Shell &shell : shells) {
        const TemporaryFolder folder;
        folder.write("scan.tif", "");
        folder.write("completions", run_kestu({"completion", shell.name}).out);
        folder.write(".zshrc", shell.settings + "\n");
        std::vector<std::string> start = {"env", "-C", folder.path};
        start.insert(start.end(), shell.start.begin(), shell.start.end());
        for (const auto &[typed, shown] : cases) {
            Terminal terminal(80, 24);
            terminal.run(
                start, {"TERM=dumb", "HOME=" + folder.path, "ZDOTDIR=" + folder.path, "LC_ALL=C"});
            terminal.wait_for_text("ready> |");
            terminal.type(std::string(typed) + "\t");
            terminal.wait_for_text(shown);
        }
    }
}
