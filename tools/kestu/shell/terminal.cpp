#include "shell/terminal.hpp"

#include "shell/keys.hpp"
#include "shell/signals.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iterator>
#include <string_view>

#include <termios.h>
#include <unistd.h>

namespace program {
namespace {

// Signals of which a program dies, if it does not handle them.
constexpr int deadly[] = {SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGABRT, SIGALRM, SIGUSR1,
                          SIGUSR2, SIGXCPU, SIGSEGV, SIGBUS,  SIGILL,  SIGFPE};
constexpr int stopping[] = {SIGTSTP, SIGCONT};
constexpr size_t signals = std::size(deadly) + std::size(stopping);

// For the handlers, which may use nothing but what the system lets them.
volatile std::sig_atomic_t raw = 0;
int terminal_file = -1;
int key_file = -1;
termios user_settings;
termios raw_settings;

struct sigaction actions_before[signals];

// In the background the terminal is another program's, and touching it would stop this one.
bool owns_terminal() {
    return tcgetpgrp(terminal_file) == getpgrp();
}

void show(std::string_view bytes) {
    (void)!write(STDOUT_FILENO, bytes.data(), bytes.size());
}

// The editor does not fold lines: one that is too wide would take another row with every key if
// the terminal folded it.
void set_raw() {
    if (!owns_terminal())
        return;
    tcsetattr(terminal_file, TCSANOW, &raw_settings);
    show("\x1b[?7l");
}

void restore(std::string_view farewell = "") {
    if (!owns_terminal())
        return;
    tcsetattr(terminal_file, TCSANOW, &user_settings);
    show("\x1b[?7h");
    show(farewell);
}

void die_restored(int signal) {
    restore("\n");
    raise(signal); // which comes with the end of this handler, and has its default again
}

void set_handler(int signal, void (*handler)(int), int flags) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

void go_on(int) {
    const int kept = errno;
    if (raw) {
        set_raw();
        (void)!write(key_file, key::redraw.data(), key::redraw.size());
    }
    errno = kept;
}

// Stops as if the signal had never been handled, and comes back here when the program goes on, or
// at once where the system does not let it stop.
void stop_restored(int signal) {
    const int kept = errno;
    restore("\n");
    set_handler(signal, SIG_DFL, 0);
    raise(signal);
    sigset_t only;
    sigset_t before;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, &before);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    set_handler(signal, stop_restored, SA_RESTART);
    go_on(signal);
    errno = kept;
}

// What is ignored stays so: somebody wants the program to survive it.
void handle(int signal, void (*handler)(int), int flags, struct sigaction *before) {
    sigaction(signal, nullptr, before);
    if (before->sa_handler != SIG_IGN)
        set_handler(signal, handler, flags);
}

// Signals wait while settings and handlers change together, but not the keys that end a program:
// one that was meant for a command, and comes when it is over, still finds the handler that the
// shell has for it.
sigset_t signals_that_wait() {
    return all_but(SIGINT, SIGQUIT);
}

void handle_signals() {
    struct sigaction *before = actions_before;
    for (const int signal : deadly)
        handle(signal, die_restored, static_cast<int>(SA_RESETHAND), before++);
    handle(SIGTSTP, stop_restored, SA_RESTART, before++);
    handle(SIGCONT, go_on, SA_RESTART, before++);
}

void release_signals() {
    const struct sigaction *before = actions_before;
    for (const int signal : deadly)
        sigaction(signal, before++, nullptr);
    for (const int signal : stopping)
        sigaction(signal, before++, nullptr);
}

// Output stays as it is, and so do the keys that stop the program or make it dump its memory.
termios settings_for_keys(termios settings) {
    const tcflag_t output = settings.c_oflag;
    cfmakeraw(&settings);
    settings.c_oflag = output;
    settings.c_lflag |= ISIG;
    settings.c_cc[VINTR] = _POSIX_VDISABLE;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return settings;
}

} // namespace

RawTerminal::RawTerminal(int terminal, int keys) {
    terminal_file = terminal;
    key_file = keys;
    if (tcgetattr(terminal, &user_settings) != 0)
        return;
    raw_settings = settings_for_keys(user_settings);
    std::fflush(stdout);
    const SignalsHeld held(signals_that_wait());
    raw = 1;
    set_raw();
    handle_signals();
}

RawTerminal::~RawTerminal() {
    if (!raw)
        return;
    const SignalsHeld held(signals_that_wait());
    release_signals();
    restore();
    raw = 0;
}

} // namespace program
