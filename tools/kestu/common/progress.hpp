// How far a long run is.
#pragma once

#include "program.hpp"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace program {

// A bar on standard error, when that is a terminal, from the second second of a run to its end,
// with the time that is left at the pace so far.
class Progress {
  public:
    // `total` steps are to be done under the title `title`; 0 when nobody knows how many, so that
    // only what is done is told, in `unit`.
    explicit Progress(const std::string &title, unsigned long long total = 0,
                      const char *unit = "step");
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void advance(unsigned long long steps = 1) { done_ += steps; }

    // Says something on the same terminal, with the bar out of the way.
    void aside(const std::function<void()> &say);

    // True on success. A failure is told aside, behind `subject`.
    bool ok(kestu_error_t *err, const std::string &subject, Outcome &outcome);

  private:
    void draw_until_stopped(const std::stop_token &stop);
    void draw();
    void erase();

    const std::string title_;
    const unsigned long long total_;
    const char *const unit_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::atomic<unsigned long long> done_ = 0;
    bool shown_ = false; // the bar, which `terminal` guards
    std::mutex terminal_;
    std::condition_variable_any wake_;
    std::jthread drawer_; // waits beside the work, which may be one long call
};

} // namespace program
