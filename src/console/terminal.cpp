// The terminal is standard input for settings, and standard output for its size.
#include "console/terminal.hpp"

#include "error/error.hpp"

#include <csignal>
#include <cstdio>

#include <apr_signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kestu {
namespace {

constinit volatile std::sig_atomic_t window_changed = 0;

// Kept: the default comes back, so that only one change is noticed. Relied on by: programs.
extern "C" void note_window_change(int signal) {
    apr_signal(signal, SIG_DFL);
    window_changed = 1;
}

} // namespace

termios raw_settings(termios found) {
    using Flags = tcflag_t;
    found.c_iflag &= ~Flags{BRKINT | PARMRK | ISTRIP | INLCR | IGNCR | ICRNL | IXON | IXOFF};
    found.c_cflag &= ~Flags{CSIZE | PARENB};
    found.c_cflag |= CS8;
    found.c_lflag &= ~Flags{ICANON | ECHO | ECHONL | IEXTEN};
    return found;
}

// What is no terminal is left alone, and read as it comes.
void enter_raw_mode(kestu_ri_t &ctx) {
    if (tcgetattr(STDIN_FILENO, &ctx.saved_termios) == 0) {
        ctx.raw_termios = raw_settings(ctx.saved_termios);
        tcsetattr(STDIN_FILENO, TCSANOW, &ctx.raw_termios);
    }
    std::fflush(stdout);
}

void leave_raw_mode(const kestu_ri_t &ctx) {
    tcsetattr(STDIN_FILENO, TCSANOW, &ctx.saved_termios);
    std::fflush(stdout);
}

kestu_error_t *measure_terminal(kestu_ri_t &ctx) {
    winsize size;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return wrap(fail(KESTU_ERR_CONSOLE_SIZE), "Can't retrive line.");
    ctx.cols = size.ws_col;
    ctx.rows = size.ws_row;
    return nullptr;
}

void watch_window() {
    apr_signal(SIGWINCH, note_window_change);
}

kestu_error_t *follow_window(kestu_ri_t &ctx, bool &changed) {
    changed = window_changed;
    if (!changed)
        return nullptr;
    kestu_error_t *err = measure_terminal(ctx);
    if (!err)
        window_changed = 0;
    return err;
}

} // namespace kestu
