// Measuring in processes of their own.
//
// What it costs to take memory and to give it back depends on what a process did before: fresh
// pages come from the system one fault at a time, and free lists hand blocks out in the order in
// which they were given back, near each other or far apart. In one process each case would meet
// what the cases before it left. So every measurement here is made in a child process that has done
// nothing yet, and all sides meet the same.
#pragma once

#include <benchmark/benchmark.h>

#include <ctime>

#include <sys/wait.h>
#include <unistd.h>

// The seconds of processor time, the system's share included, that `work` takes.
template <typename Work>
double seconds_for(Work work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    };
    const double start = now();
    work();
    return now() - start;
}

// Runs `body` in a child for each iteration; it returns the seconds that count. For benchmarks that
// are registered by in_children.
template <typename Body>
void measure_in_child(benchmark::State &state, Body body) {
    for (auto _ : state) {
        double seconds = 0;
        int ends[2];
        if (pipe(ends) != 0)
            return state.SkipWithError("no pipe");
        const pid_t child = fork();
        if (child == 0) {
            seconds = body();
            _exit(write(ends[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
        }
        close(ends[1]);
        const bool is_told = read(ends[0], &seconds, sizeof seconds) == sizeof seconds;
        close(ends[0]);
        waitpid(child, nullptr, 0);
        if (!is_told)
            return state.SkipWithError("the child failed");
        state.SetIterationTime(seconds);
    }
}

inline void in_children(benchmark::internal::Benchmark *benchmark) {
    benchmark->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
}
