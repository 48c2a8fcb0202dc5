// The main of test programs: the library is up while the tests run.
#include "kestu_lib.h"

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    const int result = RUN_ALL_TESTS();
    kestu_terminate();
    return result;
}
