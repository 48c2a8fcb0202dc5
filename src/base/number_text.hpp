// The digits of a number as text, without sign, prefix and padding.
#pragma once

#include "base/decimal.hpp"

#include <string_view>

namespace kestu {

enum class Notation { fixed, scientific, shorter };

// How a floating value is printed.
struct FloatStyle {
    Notation notation;
    int precision;   // negative when none was given
    bool alternate;  // always with a point; in the shorter notation with all its zeros
    bool group;      // integer digits in threes
    bool upper_case; // of the letter before an exponent
};

// A text that grows from its last character to its first.
class NumberText {
  public:
    std::string_view view() const {
        return {begin_, static_cast<size_t>(buffer_ + sizeof buffer_ - begin_)};
    }

    // Prints `value` with "," between groups of three digits, of which `written` stand already.
    void put_grouped(uint64_t value, unsigned base, bool upper_case, int written = 0);

    // Prints the magnitude of a finite value. False when the notation has no room for it.
    [[nodiscard]] bool put_float(double value, const FloatStyle &style);

  private:
    void put_scientific(Binary value, const FloatStyle &style, int places);
    void put_shorter(Binary value, const FloatStyle &style, int places);
    void put_fixed(Fixed number, int places, const FloatStyle &style);
    void put_exponent(int exponent, bool upper_case);
    void put_digits(uint64_t value, size_t count);

    // The longest texts are 20 grouped digits with 19 places, and 22 grouped octal digits.
    char buffer_[64];
    char *begin_ = buffer_ + sizeof buffer_;
};

} // namespace kestu
