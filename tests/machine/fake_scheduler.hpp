// A scheduler that answers and fails as a test wants it.
#pragma once

#include <optional>
#include <vector>

namespace kestu::test {

// While it lives, sched_getaffinity and sched_setaffinity of this program do as it says; what it
// does not say is done by the system.
struct FakeScheduler {
    FakeScheduler();
    ~FakeScheduler();
    FakeScheduler(const FakeScheduler &) = delete;
    FakeScheduler &operator=(const FakeScheduler &) = delete;

    std::optional<std::vector<int>> allowed; // the processors that a query tells
    int failing_get = 0;                     // the errno of queries, 0 for success
    int failing_set = 0;                     // the errno of requests
    int sets_before_failing = 0;             // so many requests succeed first
};

// The processors that the thread may run on, from the system.
std::vector<int> allowed_processors();

} // namespace kestu::test
