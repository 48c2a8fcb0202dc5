#include "shell/redirection.hpp"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace program {
namespace {

[[noreturn]] void run_shell(const std::string &script, const int (&ends)[2]) {
    dup2(ends[0], STDIN_FILENO);
    close(ends[0]);
    close(ends[1]);
    execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    _exit(127);
}

} // namespace

Redirection::Redirection(const std::string &rest) {
    int ends[2];
    if (rest.empty() || pipe2(ends, O_CLOEXEC) != 0)
        return;
    std::fflush(stdout);
    const std::string script = rest[0] == '|' ? rest.substr(1) : "cat " + rest;
    shell_ = fork();
    if (shell_ == 0)
        run_shell(script, ends);
    saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
}

int Redirection::finish() {
    if (saved_ < 0)
        return 0;
    std::fflush(stdout);
    std::clearerr(stdout); // whoever read it may have had enough
    dup2(saved_, STDOUT_FILENO);
    close(std::exchange(saved_, -1));
    int status = 0;
    while (shell_ > 0 && waitpid(shell_, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace program
