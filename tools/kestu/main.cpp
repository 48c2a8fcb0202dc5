// The kestu program: the library's families from the command line.
#include "program.hpp"

#include "kestu_lib.h"

#include <cstdio>

int main(int argc, char **argv) {
    if (const int failed = kestu_initialize(); failed != KESTU_INIT_OK) {
        std::fprintf(stderr, "kestu: the library cannot be started (status %d)\n", failed);
        return program::exit_failure;
    }
    const int status = program::run({argv + 1, argv + argc});
    kestu_terminate();
    return status;
}
