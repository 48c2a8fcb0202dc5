#include "common/progress.hpp"

#include "common/text.hpp"

#include <algorithm>
#include <chrono>
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
    erase();
    say();
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
    const std::string state = total_ > 0 ? bar(done_, total_) : counted(done_, unit_);
    const int room = columns_of_terminal() - static_cast<int>(state.size()) - 2;
    const std::string name = shortened(title_, static_cast<size_t>(std::max(room, 0)));
    std::fprintf(stderr, "\r%s %s", name.c_str(), state.c_str());
    shown_ = true;
}

void Progress::erase() {
    const auto columns = static_cast<size_t>(columns_of_terminal() - 1);
    if (shown_)
        std::fprintf(stderr, "\r%s\r", std::string(columns, ' ').c_str());
    shown_ = false;
}

} // namespace program
