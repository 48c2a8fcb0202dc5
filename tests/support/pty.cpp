#include "support/pty.hpp"

#include "support/process.hpp"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <pty.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

namespace kestu::test {
namespace {

// Bytes that no program under test writes, between which a child tells the test something.
constexpr char mark_byte = '\x00';
constexpr char report_begins = '\x1e';
constexpr char report_ends = '\x1f';

void write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            throw std::runtime_error("the terminal cannot be written");
        bytes.remove_prefix(count < 0 ? 0 : static_cast<size_t>(count));
    }
}

winsize size_of(int columns, int rows) {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    return size;
}

[[noreturn]] void execute(const std::vector<std::string> &command,
                          const std::vector<std::string> &environment) {
    std::vector<char *> arguments;
    for (const std::string &argument : command)
        arguments.push_back(const_cast<char *>(argument.c_str()));
    arguments.push_back(nullptr);
    for (const std::string &setting : environment)
        putenv(const_cast<char *>(setting.c_str()));
    execvp(arguments[0], arguments.data());
    _exit(127);
}

} // namespace

Terminal::Terminal(int columns, int rows) : screen_(columns, rows) {
    const winsize size = size_of(columns, rows);
    if (openpty(&master_, &slave_, nullptr, nullptr, &size) != 0)
        throw std::runtime_error("there is no pseudo-terminal");
}

Terminal::~Terminal() {
    if (child_ > 0) {
        kill(child_, SIGKILL);
        waitpid(child_, nullptr, 0);
    }
    for (const int end : {master_, slave_})
        if (end >= 0)
            close(end);
}

void Terminal::start(const std::function<void()> &body) {
    std::fflush(nullptr);
    child_ = fork();
    if (child_ != 0)
        return;
    close(master_);
    login_tty(slave_);
    // What started the tests may have it ignore signals.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT})
        ::signal(number, SIG_DFL);
    body();
    // The settings of the terminal last as long as its first process.
    for (;;)
        pause();
}

void Terminal::run(const std::function<void()> &body) {
    start(body);
}

void Terminal::run(const std::vector<std::string> &command,
                   const std::vector<std::string> &environment) {
    start([&] { execute(command, environment); });
    close(slave_);
    slave_ = -1;
}

// Standard error is the terminal even where a test redirects standard output.
void Terminal::mark() {
    write_all(STDERR_FILENO, {&mark_byte, 1});
}

void Terminal::report(const std::string &result) {
    write_all(STDERR_FILENO, report_begins + result + report_ends);
}

void Terminal::type(std::string_view bytes) const {
    write_all(master_, bytes);
}

// The state stands behind the name in parentheses, which may hold anything.
void Terminal::wait_for_sleep() const {
    const std::string path = "/proc/" + std::to_string(child_) + "/stat";
    for (;;) {
        const std::string stat = read_file(path);
        const size_t name_end = stat.rfind(')');
        if (name_end == stat.npos || stat.compare(name_end, 3, ") S") == 0)
            return;
        sched_yield();
    }
}

void Terminal::wait_for_keys() const {
    while (settings().c_lflag & ICANON)
        sched_yield();
}

void Terminal::resize(int columns, int rows) {
    wait_for_sleep();
    screen_.resize(columns, rows);
    const winsize size = size_of(columns, rows);
    ioctl(master_, TIOCSWINSZ, &size);
}

void Terminal::signal(int number) const {
    wait_for_sleep();
    kill(child_, number);
}

void Terminal::hang_up() {
    close(master_);
    master_ = -1;
}

void Terminal::take(char c) {
    if (c == mark_byte) {
        ++marks_;
    } else if (c == report_begins) {
        reporting_ = true;
    } else if (c == report_ends) {
        reporting_ = false;
        results_.push_back(std::move(result_));
        result_.clear();
    } else if (reporting_) {
        result_ += c;
    } else {
        screen_.write({&c, 1});
    }
}

// Takes what the program has written, at least one byte; false at the end of its output. Bytes are
// read one by one so that nothing behind a mark is shown before it is asked for.
bool Terminal::follow() {
    // The first read to fail may have looked for output just before the last of it came.
    for (int attempt = 0; attempt < 2; ++attempt) {
        char c = 0;
        const ssize_t count = read(master_, &c, 1);
        if (count == 1)
            take(c);
        if (count == 1 || (count < 0 && errno == EINTR))
            return true;
    }
    return false;
}

void Terminal::wait_for_mark() {
    follow_until([this, wanted = marks_ + 1] { return marks_ == wanted; });
}

std::string Terminal::wait_for_report() {
    follow_until([this] { return !results_.empty(); });
    std::string first = results_.front();
    results_.pop_front();
    return first;
}

void Terminal::wait_for_text(const std::string &text) {
    follow_until([&] { return shown().ends_with(text); });
}

void Terminal::follow_until(const std::function<bool()> &condition) {
    while (!condition())
        if (!follow())
            throw std::runtime_error("the program ended: " + shown());
}

int Terminal::wait_for_end() {
    while (follow()) {
    }
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string Terminal::press(std::string_view key) {
    type(key);
    wait_for_mark();
    return shown();
}

termios Terminal::settings() const {
    termios found{};
    tcgetattr(master_, &found);
    return found;
}

void Terminal::change_settings(const std::function<void(termios &)> &change) const {
    termios found = settings();
    change(found);
    tcsetattr(master_, TCSANOW, &found);
}

} // namespace kestu::test
