#include "machine/fake_scheduler.hpp"
#include "support/test.hpp"

#include <sched.h>
#include <sys/syscall.h>

using namespace kestu::test;

namespace {

FakeScheduler *fake = nullptr;

int fail_with(int code) {
    errno = code;
    return -1;
}

} // namespace

namespace kestu::test {

FakeScheduler::FakeScheduler() {
    fake = this;
}

FakeScheduler::~FakeScheduler() {
    fake = nullptr;
}

std::vector<int> allowed_processors() {
    cpu_set_t set;
    CPU_ZERO(&set);
    syscall(SYS_sched_getaffinity, 0, sizeof set, &set);
    std::vector<int> processors;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu)
        if (CPU_ISSET(cpu, &set))
            processors.push_back(cpu);
    return processors;
}

} // namespace kestu::test

extern "C" {

int sched_getaffinity(pid_t pid, size_t size, cpu_set_t *set) noexcept {
    if (fake && fake->failing_get != 0)
        return fail_with(fake->failing_get);
    CPU_ZERO_S(size, set);
    if (fake && fake->allowed) {
        for (const int cpu : *fake->allowed)
            CPU_SET_S(static_cast<size_t>(cpu), size, set);
        return 0;
    }
    return syscall(SYS_sched_getaffinity, pid, size, set) < 0 ? -1 : 0;
}

int sched_setaffinity(pid_t pid, size_t size, const cpu_set_t *set) noexcept {
    if (fake && fake->failing_set != 0 && fake->sets_before_failing-- <= 0)
        return fail_with(fake->failing_set);
    return static_cast<int>(syscall(SYS_sched_setaffinity, pid, size, set));
}
}
