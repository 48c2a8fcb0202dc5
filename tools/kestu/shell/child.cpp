#include "shell/child.hpp"

#include "program.hpp"
#include "shell/signals.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace program {
namespace {

constexpr int died_of_signal = 128;

constexpr int keys[] = {SIGINT, SIGQUIT};
bool keys_are_for_commands = false;
struct sigaction actions_before[std::size(keys)];

void put_back_actions() {
    for (size_t i = 0; keys_are_for_commands && i < std::size(keys); ++i)
        sigaction(keys[i], &actions_before[i], nullptr);
}

// The keys wait until the command is ready for them.
pid_t fork_with_keys() {
    const SignalsHeld held(all_but());
    const pid_t child = fork();
    if (child == 0)
        put_back_actions();
    return child;
}

// Only what the command itself has opened and written is finished: the shell goes on reading.
[[noreturn]] void run_here(const std::vector<std::string> &arguments, bool keeps_input) {
    if (!keeps_input)
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    const int status = run(arguments);
    std::fflush(stdout);
    _exit(status);
}

int wait_for(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            return exit_failure;
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    const int signal = WTERMSIG(status);
    // Whoever pressed the key knows; the terminal has shown it without a line end.
    if (signal == SIGINT)
        std::fputc('\n', stderr);
    else if (signal != SIGPIPE) // which is how "| head" ends it
        say(std::string("the command was ended: ") + strsignal(signal));
    return died_of_signal + signal;
}

} // namespace

// A handler rather than nothing at all: what is ignored stays so at the prompt.
KeysForCommands::KeysForCommands() {
    struct sigaction nothing = {};
    nothing.sa_handler = [](int) {};
    nothing.sa_flags = SA_RESTART;
    for (size_t i = 0; i < std::size(keys); ++i)
        sigaction(keys[i], &nothing, &actions_before[i]);
    keys_are_for_commands = true;
}

KeysForCommands::~KeysForCommands() {
    put_back_actions();
    keys_are_for_commands = false;
}

int run_in_child(const std::vector<std::string> &arguments, bool keeps_input) {
    std::fflush(stdout);
    const pid_t child = fork_with_keys();
    if (child == 0)
        run_here(arguments, keeps_input);
    if (child > 0)
        return wait_for(child);
    say(std::string("the command cannot be started: ") + std::strerror(errno));
    return exit_failure;
}

} // namespace program
