// Sums of many files.
#pragma once

#include "common/progress.hpp"
#include "files/checksum.hpp"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace program {

// Sums files on threads of its own, or where it is called, and hands the sums out in their order.
class Summing {
  public:
    // No threads are started for one.
    Summing(unsigned threads, Progress &progress);
    ~Summing();
    Summing(const Summing &) = delete;
    Summing &operator=(const Summing &) = delete;

    // `done` gets the sum on the thread that calls add() or finish().
    using Done = std::function<void(const FileSum &sum)>;
    void add(const std::string &path, SumKind kind, Done done);

    // Returns when all sums have been handed out.
    void finish() { hand_out(0); }

  private:
    struct Job {
        std::string path;
        SumKind kind;
        Done done;
        FileSum sum;
        bool is_summed = false;
    };

    void work();
    // Hands out what is there, and waits while more than `most` jobs are left.
    void hand_out(size_t most);

    Progress &progress_;
    const size_t most_waiting_;
    std::mutex jobs_lock_;
    std::condition_variable changed_;
    std::deque<Job> jobs_; // from the oldest whose sum has not been handed out
    size_t taken_ = 0;     // of them, by threads
    bool ending_ = false;
    std::vector<std::jthread> threads_;
};

} // namespace program
