#include "common/progress.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include <sys/ioctl.h>
#include <unistd.h>

namespace program {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 1s; // shorter runs show nothing
constexpr auto pause_between_drawings = 200ms;
constexpr int bar_cells = 20;

int columns_of_terminal() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string bar(unsigned long long done, unsigned long long total) {
    const double part = std::min(static_cast<double>(done) / static_cast<double>(total), 1.0);
    const auto full = static_cast<size_t>(part * bar_cells);
    const std::string cells = std::string(full, '#') + std::string(bar_cells - full, '.');
    return text("[%s] %3d %%", cells.c_str(), static_cast<int>(part * 100));
}

// "  1:05 left", and nothing while nobody can tell.
std::string time_left(unsigned long long done, unsigned long long total, double seconds) {
    if (done == 0 || done >= total)
        return "";
    const double left = seconds * (static_cast<double>(total) / static_cast<double>(done) - 1);
    const auto whole = static_cast<long long>(std::min(std::ceil(left), 359999.0));
    const std::string minutes = text(whole < 3600 ? "%lld" : "%02lld", whole / 60 % 60);
    return "  " + (whole < 3600 ? "" : text("%lld:", whole / 3600)) + minutes +
           text(":%02lld left", whole % 60);
}

// The end of a title, in whole characters of UTF-8: a line that wraps could not be erased.
std::string shortened(const std::string &title, size_t columns) {
    const auto begins_character = [](char c) { return (c & 0xC0) != 0x80; };
    auto room = columns;
    auto begin = title.end();
    for (auto at = title.end(); at != title.begin() && room > 0;)
        if (begins_character(*--at)) {
            begin = at;
            --room;
        }
    return {begin, title.end()};
}

} // namespace

Progress::Progress(const std::string &what, unsigned long long steps, const char *unit_of_steps)
    : title_(printable(what.c_str())), total_(steps), unit_(unit_of_steps) {
    if (isatty(STDERR_FILENO))
        drawer_ = std::jthread([this](const std::stop_token &stop) { draw_until_stopped(stop); });
}

Progress::~Progress() {
    if (!drawer_.joinable())
        return;
    drawer_.request_stop();
    drawer_.join();
    erase();
}

void Progress::aside(const std::function<void()> &say) {
    const std::lock_guard lock(terminal_);
    const bool shares_terminal = shown_;
    erase();
    say();
    if (shares_terminal)
        std::fflush(stdout);
}

bool Progress::ok(kestu_error_t *err, const std::string &subject, Outcome &outcome) {
    if (err)
        aside([&] { outcome.ok(err, printable(subject.c_str())); });
    return !err;
}

void Progress::draw_until_stopped(const std::stop_token &stop) {
    std::unique_lock lock(terminal_);
    const auto never = [] { return false; };
    wake_.wait_for(lock, stop, patience, never);
    while (!stop.stop_requested()) {
        draw();
        wake_.wait_for(lock, stop, pause_between_drawings, never);
    }
}

void Progress::draw() {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
    const unsigned long long done = done_;
    const std::string state = total_ > 0
                                  ? bar(done, total_) + time_left(done, total_, passed.count())
                                  : counted(done, unit_);
    const auto columns = static_cast<size_t>(columns_of_terminal() - 1);
    const size_t room = columns > state.size() ? columns - state.size() - 1 : 0;
    const std::string name = shortened(title_, room);
    const std::string line = (name.empty() ? "" : name + " ") + state.substr(0, columns);
    erase();
    std::fputs(line.c_str(), stderr);
    shown_ = true;
}

void Progress::erase() {
    const auto columns = static_cast<size_t>(columns_of_terminal() - 1);
    if (shown_)
        std::fprintf(stderr, "\r%s\r", std::string(columns, ' ').c_str());
    shown_ = false;
}

} // namespace program
