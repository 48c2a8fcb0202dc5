#include "shell/keyboard.hpp"

#include "shell/signals.hpp"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace program {
namespace {

// More than one byte, and no sequence.
constexpr std::string_view no_key = "end";

int checked(int result, const char *what) {
    if (result < 0)
        throw std::system_error(errno, std::generic_category(), what);
    return result;
}

// Signals belong to the thread that reads keys, whose read they are to interrupt; but one that asks
// for input in the background has to be stopped.
std::thread start_without_signals(auto body) {
    const SignalsHeld held(all_but(SIGTTIN));
    return std::thread(body);
}

} // namespace

// Packets keep one key apart from the next.
Keyboard::Keyboard(int file) : terminal_(file) {
    int ends[2];
    stopper_ = checked(eventfd(0, EFD_CLOEXEC), "eventfd");
    checked(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), "socketpair");
    sender_ = ends[0];
    fcntl(sender_, F_SETFL, O_NONBLOCK);
    dup2(ends[1], STDIN_FILENO);
    close(ends[1]);
    follower_ = start_without_signals([this] { follow(); });
}

Keyboard::~Keyboard() {
    eventfd_write(stopper_, 1);
    follower_.join();
    dup2(terminal_, STDIN_FILENO);
    close(sender_);
    close(stopper_);
}

void Keyboard::follow() {
    while (wait_for(terminal_, POLLIN) && take_key()) {
    }
}

// False when the line is at its end.
bool Keyboard::wait_for(int file, short event) const {
    pollfd files[] = {{stopper_, POLLIN, 0}, {file, event, 0}};
    while (poll(files, 2, -1) < 0 && errno == EINTR) {
    }
    return files[0].revents == 0;
}

// Enter leaves the cursor at the end of the line, so that the line comes whole and what a command
// prints stands below it. False when there is nothing more to read.
bool Keyboard::take_key() {
    char byte = 0;
    const ssize_t count = read(terminal_, &byte, 1);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return true;
    if (count <= 0) {
        ended_ = true;
        hand_over(no_key);
        return false;
    }
    const std::string_view key = decoder_.take(byte);
    if (key.empty())
        return true;
    if (key == key::enter && !hand_over(key::end))
        return false;
    return hand_over(key) && key != key::enter && key != key::interrupt;
}

bool Keyboard::hand_over(std::string_view key) const {
    while (wait_for(sender_, POLLOUT)) {
        if (send(sender_, key.data(), key.size(), MSG_NOSIGNAL) >= 0)
            return true;
        if (errno != EAGAIN && errno != EINTR)
            return false;
    }
    return false;
}

} // namespace program
