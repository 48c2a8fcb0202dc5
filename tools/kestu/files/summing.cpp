#include "files/summing.hpp"

#include <utility>

namespace program {
namespace {

// So that no thread waits for the end of one large file.
constexpr size_t jobs_for_each_thread = 64;

} // namespace

Summing::Summing(unsigned threads, Progress &progress)
    : progress_(progress), most_waiting_(threads * jobs_for_each_thread) {
    for (unsigned i = 0; threads > 1 && i < threads; ++i)
        threads_.emplace_back([this] { work(); });
}

Summing::~Summing() {
    const std::lock_guard lock(jobs_lock_);
    ending_ = true;
    changed_.notify_all();
}

void Summing::add(const std::string &path, SumKind kind, Done done) {
    if (threads_.empty())
        return done(sum_of_file(path, kind, progress_));
    {
        const std::lock_guard lock(jobs_lock_);
        jobs_.push_back({path, kind, std::move(done), {}, false});
    }
    changed_.notify_all();
    hand_out(most_waiting_);
}

void Summing::work() {
    std::unique_lock lock(jobs_lock_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || taken_ < jobs_.size(); });
        if (ending_)
            return;
        Job &job = jobs_[taken_++]; // which stays where it is while others come and go
        lock.unlock();
        FileSum sum = sum_of_file(job.path, job.kind, progress_);
        lock.lock();
        job.sum = std::move(sum);
        job.is_summed = true;
        changed_.notify_all();
    }
}

void Summing::hand_out(size_t most) {
    std::unique_lock lock(jobs_lock_);
    while (!jobs_.empty() && (jobs_.front().is_summed || jobs_.size() > most)) {
        changed_.wait(lock, [this] { return jobs_.front().is_summed; });
        const Job job = std::move(jobs_.front());
        jobs_.pop_front();
        --taken_;
        lock.unlock();
        job.done(job.sum);
        lock.lock();
    }
}

} // namespace program
