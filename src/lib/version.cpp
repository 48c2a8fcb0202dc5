// The version of the library that is loaded, which may differ from the headers'.
#include "kestu_lib.h"

int kestu_version_major(void) {
    return KESTU_VERSION_MAJOR;
}

int kestu_version_minor(void) {
    return KESTU_VERSION_MINOR;
}

int kestu_version_patch(void) {
    return KESTU_VERSION_PATCH;
}

const char *kestu_version_string(void) {
    return KESTU_VERSION_STRING;
}
