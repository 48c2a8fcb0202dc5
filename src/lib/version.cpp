// The version of the library that is loaded, which may differ from the headers'.
#include "kestu_lib.h"

int kestu_version_major(void) {
    return 1;
}

int kestu_version_minor(void) {
    return 0;
}

int kestu_version_patch(void) {
    return 0;
}

const char *kestu_version_string(void) {
    return "1.0.0";
}
