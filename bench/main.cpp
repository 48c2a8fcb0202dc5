// The main of benchmarks that are declared where they stand: the library is up while they run.
#include "kestu_lib.h"

#include <benchmark/benchmark.h>

int main(int argc, char **argv) {
    kestu_initialize();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kestu_terminate();
}
