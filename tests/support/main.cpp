// The main of test programs: the library is up while the tests run.
#include "kestu_lib.h"

#include <gmock/gmock.h>

// Requests that no system can meet are refused under the sanitizers too, not fatal.
extern "C" const char *__asan_default_options() {
    return "allocator_may_return_null=1";
}

extern "C" const char *__tsan_default_options() {
    return "allocator_may_return_null=1";
}

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    const int result = RUN_ALL_TESTS();
    kestu_terminate();
    return result;
}
