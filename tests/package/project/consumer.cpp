#include <kestu.h>

#include <utarray.h> // whose types and macros stay those of the program
#include <uthash.h>

#include <cstdio>
#include <cstring>

int main() {
    if (kestu_initialize() != KESTU_INIT_OK)
        return 1;
    kestu_error_t *err = kestu_error_createf(KESTU_ERROR_PLAIN, 0, nullptr, "made in %s", "C++");
    const bool good = std::strcmp(err->file, "consumer.cpp") == 0;
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, stdout));
    kestu_terminate();
    return good ? 0 : 1;
}
