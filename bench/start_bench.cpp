// Starting: the library from kestu_initialize to the first error and back, in a process of its own,
// beside what it stands on; and the program, beside one that does nothing.
#include "in_child.hpp"
#include "kestu_error.h"
#include "kestu_lib.h"

#include <apr_general.h>
#include <benchmark/benchmark.h>

#include <chrono>

#include <fcntl.h>
#include <spawn.h>

namespace {

void library(benchmark::State &state) {
    measure_in_child(state, [] {
        return seconds_for([] {
            kestu_initialize();
            kestu_error_clear(kestu_error_create(0, 0, nullptr, "first"));
            kestu_terminate();
        });
    });
}

void apr(benchmark::State &state) {
    measure_in_child(state, [] {
        return seconds_for([] {
            apr_pool_t *pool = nullptr;
            apr_initialize();
            apr_pool_create_ex(&pool, nullptr, nullptr, nullptr);
            apr_pool_destroy(pool);
            apr_terminate();
        });
    });
}

// The program with a text to escape, which takes no time.
void run_program(benchmark::State &state, const char *path) {
    char *const command[] = {const_cast<char *>(path), const_cast<char *>("escape"),
                             const_cast<char *>("text"), nullptr};
    posix_spawn_file_actions_t silent;
    posix_spawn_file_actions_init(&silent);
    posix_spawn_file_actions_addopen(&silent, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        pid_t child = 0;
        int status = 1;
        if (posix_spawn(&child, path, &silent, nullptr, command, environ) == 0)
            waitpid(child, &status, 0);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        if (status != 0)
            state.SkipWithError("the program failed");
        state.SetIterationTime(time.count());
    }
    posix_spawn_file_actions_destroy(&silent);
}

BENCHMARK(library)->Name("start of the library/ours")->UseManualTime()->Iterations(50);
BENCHMARK(apr)->Name("start of the library/limit (APR)")->UseManualTime()->Iterations(50);
BENCHMARK_CAPTURE(run_program, ours, KESTU_PROGRAM)
    ->Name("start of the program/ours")
    ->UseManualTime()
    ->Iterations(50);
BENCHMARK_CAPTURE(run_program, nothing, "/bin/true")
    ->Name("start of the program/limit (true)")
    ->UseManualTime()
    ->Iterations(50);

} // namespace

BENCHMARK_MAIN();
