// What all headers of the C++ layer share.
//
// The layer is header-only C++20 on the C functions and adds no state of its own: every object here
// is a handle that the C functions take too, and what the C headers say of errors, pools and
// threads holds. Plain functions throw kestu::Error; with std::nothrow as their first argument they
// return kestu::Expected instead. What the standard library throws, such as std::bad_alloc from a
// std::string, comes as it is in either form.
//
// What cannot fail is seldom marked noexcept: the C functions are not, so that the compiler would
// guard each call of one.
#pragma once

#include "../kestu_error.h"

#include <string>
#include <version>

// The name of an inline namespace: what is compiled for one standard never meets what is compiled
// for the other, in which Expected is another type.
#ifdef __cpp_lib_expected
#define KESTU_CPP cpp23
#else
#define KESTU_CPP cpp20
#endif

namespace kestu {
inline namespace KESTU_CPP {

// A text that ends with a zero byte, as names and paths in C do. It refers to what it is made from.
class CString {
  public:
    // Refers to `text`.
    constexpr CString(const char *text) noexcept : text_(text) {}

    // Refers to what `text` holds.
    CString(const std::string &text) noexcept : text_(text.c_str()) {}

    // The text.
    constexpr operator const char *() const noexcept { return text_; }

  private:
    const char *text_;
};

} // namespace KESTU_CPP
} // namespace kestu
