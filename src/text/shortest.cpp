// The shortest text of a number.
#include "kestu_str.h"

#include "base/decimal.hpp"
#include "base/digits.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

using namespace kestu;

namespace {

// A text of a double, of which none is longer than "-2.2250738585072014e-308".
class DoubleText {
  public:
    explicit DoubleText(double value) {
        if (std::signbit(value))
            *end_++ = '-';
        if (!std::isfinite(value)) {
            put(std::isnan(value) ? "nan" : "inf", 3);
            return;
        }
        const Binary binary = to_binary(value);
        const Shortest number = shortest(binary);
        const size_t width = decimal_width(number.digits);
        const int point = static_cast<int>(width) + number.exponent; // behind so many digits
        const int scientific =
            static_cast<int>(width) + (width > 1) + (std::abs(point - 1) > 99 ? 5 : 4);
        if (fixed_size(width, point) > scientific)
            put_scientific(number.digits, width, point - 1);
        else if (number.exponent > 0)
            put_integer(binary, number);
        else
            put_fixed(number.digits, width, point);
    }

    std::string_view view() const { return {text_, static_cast<size_t>(end_ - text_)}; }

  private:
    static int fixed_size(size_t width, int point) {
        if (point <= 0)
            return static_cast<int>(width) + 2 - point;
        return std::max(static_cast<int>(width) + (point < static_cast<int>(width)), point);
    }

    void put(const char *text, size_t size) {
        std::memcpy(end_, text, size);
        end_ += size;
    }

    void put_digits(uint64_t digits, size_t width) {
        write_decimal(end_, digits, width);
        end_ += width;
    }

    void put_scientific(uint64_t digits, size_t width, int exponent) {
        put_digits(digits, width);
        if (width > 1)
            open(width - 1);
        put(exponent < 0 ? "e-" : "e+", 2);
        const auto magnitude = static_cast<uint64_t>(std::abs(exponent));
        put_digits(magnitude, magnitude > 99 ? 3 : 2);
    }

    // Where an integer has more digits than tell it from its neighbours, they all stand here.
    void put_integer(Binary value, Shortest number) {
        const Fixed parts =
            split(value.exponent < 0
                      ? Uint128{number.digits} * powers_of_ten[static_cast<size_t>(number.exponent)]
                      : Uint128{value.mantissa} << value.exponent,
                  max_places);
        const auto high = static_cast<uint64_t>(parts.integer);
        if (high > 0)
            put_digits(high, decimal_width(high));
        put_digits(parts.fraction, high > 0 ? max_places : decimal_width(parts.fraction));
    }

    void put_fixed(uint64_t digits, size_t width, int point) {
        if (point <= 0) {
            put("0.000", static_cast<size_t>(2 - point));
            put_digits(digits, width);
            return;
        }
        put_digits(digits, width);
        if (static_cast<size_t>(point) < width)
            open(width - static_cast<size_t>(point));
    }

    // Makes room for a point before the last `count` digits.
    void open(size_t count) {
        std::memmove(end_ - count + 1, end_ - count, count);
        end_[-static_cast<ptrdiff_t>(count)] = '.';
        ++end_;
    }

    char text_[32];
    char *end_ = text_;
};

} // namespace

size_t kestu_str_from_double(double value, char *buf, size_t size) {
    const DoubleText text(value);
    const std::string_view view = text.view();
    if (size > 0) {
        const size_t n = std::min(view.size(), size - 1);
        std::memcpy(buf, view.data(), n);
        buf[n] = '\0';
    }
    return view.size();
}
