// Many files: their names, and work on several at once with results in order.
#pragma once

#include "program.hpp"

#include <condition_variable>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace program {

struct Batch {
    std::vector<std::string> paths; // as given
    std::string list;               // a file with more of them, or "-"
    bool zeros = false;             // between the names of the list, not ends of lines
    unsigned threads = 0;           // 0: one for each processor

    unsigned workers() const;
};

// Adds FILE..., --files-from, -0 and -j.
void add_batch_options(CLI::App &command, Batch &batch);

// All names; false, and `outcome` told, when the list cannot be read or is empty.
bool gather_paths(Batch &batch, Outcome &outcome);

// Calls `work` with 0 to `count` - 1, several at once, and hands its results to `deliver`, which
// runs in the calling thread, in this order. No worker runs far ahead.
template <typename Result, typename Work, typename Deliver>
void in_order(size_t count, unsigned workers, Work work, Deliver deliver) {
    if (workers <= 1 || count <= 1) {
        for (size_t i = 0; i < count; ++i)
            deliver(i, work(i));
        return;
    }
    std::mutex guard;
    std::condition_variable changed;
    std::map<size_t, Result> done;
    std::exception_ptr failure; // no memory
    size_t next = 0;
    size_t delivered = 0;
    const auto run = [&] {
        std::unique_lock lock(guard);
        for (;;) {
            changed.wait(lock, [&] { return next == count || next < delivered + 4 * workers; });
            if (next == count)
                return;
            const size_t mine = next++;
            lock.unlock();
            Result result{};
            std::exception_ptr thrown;
            try {
                result = work(mine);
            } catch (...) {
                thrown = std::current_exception();
            }
            lock.lock();
            if (thrown)
                failure = thrown;
            done.emplace(mine, std::move(result));
            changed.notify_all();
        }
    };
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < workers && i < count; ++i)
        threads.emplace_back(run);
    std::unique_lock lock(guard);
    while (delivered < count) {
        changed.wait(lock, [&] { return failure || done.contains(delivered); });
        if (failure) {
            next = count;
            changed.notify_all();
            lock.unlock();
            threads.clear(); // which waits for them
            std::rethrow_exception(failure);
        }
        auto result = done.extract(delivered);
        lock.unlock();
        deliver(delivered, std::move(result.mapped()));
        lock.lock();
        ++delivered;
        changed.notify_all();
    }
}

} // namespace program
