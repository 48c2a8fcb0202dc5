#include "terminal.hpp"

#include "failure.hpp"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kestu::edit {
namespace {

constexpr std::string_view pastes_on = "\x1b[?2004h";
constexpr std::string_view pastes_off = "\x1b[?2004l";

// Keys come one by one, those of signals among them; output is left as it is.
termios for_keys(termios settings) {
    using Flags = tcflag_t;
    settings.c_iflag &= ~Flags{BRKINT | INPCK | ISTRIP | INLCR | IGNCR | ICRNL | IXON};
    settings.c_lflag &= ~Flags{ICANON | ECHO | ECHONL | IEXTEN | ISIG};
    settings.c_cflag &= ~Flags{CSIZE | PARENB};
    settings.c_cflag |= CS8;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return settings;
}

bool poll_for(int file, short event, int milliseconds) {
    pollfd polled = {.fd = file, .events = event, .revents = 0};
    return poll(&polled, 1, milliseconds) > 0;
}

bool is_not_now(int code) {
    return code == EAGAIN || code == EWOULDBLOCK;
}

} // namespace

void Terminal::attach(int in, int out) {
    in_ = in;
    out_ = out;
    interactive_ = in >= 0 && out >= 0 && isatty(in) && isatty(out);
}

kestu_error_t *Terminal::enter() {
    if (!interactive_ || entered_)
        return nullptr;
    if (tcgetattr(in_, &before_) != 0)
        return fail_system(KESTU_ERR_READ, "The terminal");
    const termios wanted = for_keys(before_);
    entered_ = 1; // before it is so, for a handler that comes between
    if (tcsetattr(in_, TCSADRAIN, &wanted) != 0) {
        entered_ = 0;
        return fail_system(KESTU_ERR_WRITE, "The terminal");
    }
    static_cast<void>(::write(out_, pastes_on.data(), pastes_on.size()) > 0);
    return nullptr;
}

void Terminal::leave() const {
    if (!entered_)
        return;
    entered_ = 0;
    const int kept = errno;
    const pid_t front = tcgetpgrp(in_); // a terminal that others have now is theirs to set
    if (front < 0 || front == getpgrp()) {
        static_cast<void>(::write(out_, pastes_off.data(), pastes_off.size()) > 0);
        tcsetattr(in_, TCSADRAIN, &before_);
    }
    errno = kept;
}

bool Terminal::measure(size_t &columns, size_t &rows) const {
    winsize size = {};
    if (out_ < 0 || ioctl(out_, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return false;
    columns = size.ws_col;
    rows = size.ws_row;
    return true;
}

kestu_error_t *Terminal::write(Bytes &bytes) {
    std::string_view rest = bytes.view();
    while (!rest.empty()) {
        const ssize_t put = ::write(out_, rest.data(), rest.size());
        if (put > 0)
            rest.remove_prefix(static_cast<size_t>(put));
        else if (put < 0 && is_not_now(errno))
            poll_for(out_, POLLOUT, -1);
        else if (put < 0 && errno != EINTR)
            break;
    }
    kestu_error_t *err = rest.empty() ? nullptr : fail_system(KESTU_ERR_WRITE, "The terminal");
    bytes.clear();
    return err;
}

kestu_error_t *Terminal::read(char &byte, bool &got, bool &at_end) {
    const ssize_t count = ::read(in_, &byte, 1);
    got = count > 0;
    // A terminal that has hung up answers with an error of its own.
    at_end = count == 0 || (count < 0 && errno == EIO);
    if (got || at_end || errno == EINTR || is_not_now(errno))
        return nullptr;
    return fail_system(KESTU_ERR_READ, "The input");
}

bool Terminal::has_more() const {
    return poll_for(in_, POLLIN, 0);
}

// Signals wait until the sleep begins, so that it sees what they do.
bool Terminal::wait() const {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    pollfd polled = {.fd = in_, .events = POLLIN, .revents = 0};
    const bool is_put_back = interactive_ && !entered_;
    const bool ready = !is_put_back && (ppoll(&polled, 1, nullptr, &before) >= 0 || errno != EINTR);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return ready;
}

} // namespace kestu::edit
