// The library's life.
//
//     kestu::Library library;                      // throws std::runtime_error
//     puts(kestu_version_string());
#pragma once

#include "../kestu_lib.h"
#include "base.hpp"

#include <cstdlib>
#include <exception>
#include <stdexcept>

namespace kestu {
inline namespace KESTU_CPP {

// Starts the library, and stops it at the end of the scope. When an exception leaves the scope, the
// library stays until the process exits, so that whoever catches it can read it.
class Library {
  public:
    Library() {
        if (kestu_initialize() == KESTU_INIT_OK)
            return;
        kestu_terminate();
        throw std::runtime_error("the library cannot be started");
    }
    ~Library() {
        if (std::uncaught_exceptions() == exceptions_ || std::atexit(kestu_terminate) != 0)
            kestu_terminate();
    }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

  private:
    int exceptions_ = std::uncaught_exceptions();
};

} // namespace KESTU_CPP
} // namespace kestu
