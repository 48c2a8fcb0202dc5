// How the component makes its errors, and what it does to errno.
#pragma once

#include "kestu_error.h"
#include "kestu_error_codes.h"

#include <cerrno>
#include <cstring>

#define KESTU_EDIT_FAIL(code, ...)                                                                 \
    kestu_error_createf_i(KESTU_ERROR_ERROR, (code), 0, nullptr, nullptr, nullptr, __VA_ARGS__)

namespace kestu::edit {

inline kestu_error_t *no_memory() {
    return KESTU_EDIT_FAIL(KESTU_ERR_NO_MEMORY, "Failed to allocate memory.");
}

inline kestu_error_t *fail_system(int code, const char *what) {
    return KESTU_EDIT_FAIL(code, "%s: %s", what, std::strerror(errno));
}

} // namespace kestu::edit
