// Text: conversions to numbers, integers in any base, escapes.
//
//     assert(kestu::to_number<int>("42") == 42);    // throws for "42 "
//     assert(kestu::to_base(-62, 62) == "-10" && kestu::from_base("-10", 62) == -62);
//     assert(kestu::unescape("a\\tb") == "a\tb" && kestu::escape("a\tb") == "a\\tb");
#pragma once

#include "../kestu_escape.h"
#include "../kestu_str.h"
#include "error.hpp"

#include <algorithm>
#include <concepts>
#include <string_view>

namespace kestu {
inline namespace KESTU_CPP {
namespace detail {

// A text that ends with a zero byte, which a view is copied for: mostly into the object itself.
// Zero bytes within it, which are part of no number, become question marks.
class Terminated {
  public:
    Terminated(const char *text) noexcept : text_(text) {}
    Terminated(const std::string &text) : Terminated(std::string_view(text)) {}
    Terminated(std::string_view text) {
        char *copy = few_;
        if (text.size() >= sizeof few_) {
            many_.resize(text.size());
            copy = many_.data();
        }
        std::replace_copy(text.begin(), text.end(), copy, '\0', '?');
        copy[text.size()] = '\0';
        text_ = copy;
    }
    Terminated(const Terminated &) = delete;
    Terminated &operator=(const Terminated &) = delete;

    operator const char *() const noexcept { return text_; }

  private:
    const char *text_;
    char few_[96];
    std::string many_;
};

inline kestu_error_t *convert(const char *text, double &out) {
    return kestu_str_to_double(text, &out);
}
template <std::signed_integral T>
kestu_error_t *convert(const char *text, T &out) {
    int64_t wide = 0;
    if (kestu_error_t *err = kestu_str_to_int64(text, &wide))
        return err;
    out = static_cast<T>(wide);
    if (out == wide)
        return nullptr;
    return kestu_error_createf_i(KESTU_ERROR_ERROR, KESTU_ERR_INTEGER_TEXT, 0, nullptr, nullptr,
                                 nullptr, "'%s' does not fit into %d-bit signed integer.", text,
                                 static_cast<int>(sizeof(T)) * 8);
}

} // namespace detail

// The number that the whole of `text` is, white space in front allowed: a double or a signed
// integer of any size.
template <typename T>
T to_number(const detail::Terminated &text) {
    T number{};
    detail::check(detail::convert(text, number));
    return number;
}

// As `to_number` above, but returns the error.
template <typename T>
Expected<T> to_number(std::nothrow_t, const detail::Terminated &text) {
    T number{};
    if (kestu_error_t *err = detail::convert(text, number))
        return detail::failed(err);
    return number;
}

// The digits of a number.
class Digits {
  public:
    // Those of `value` in that base; none when it is not from 2 to 62.
    Digits(int64_t value, int base) noexcept
        : size_(kestu_str_int64_to_base62(value, base, text_, sizeof text_)) {}

    // The digits.
    operator std::string_view() const noexcept { return {text_, static_cast<size_t>(size_)}; }

    // The digits with a zero byte behind them.
    const char *c_str() const noexcept { return size_ ? text_ : ""; }

    // Whether the digits are `b`.
    friend bool operator==(const Digits &a, std::string_view b) noexcept {
        return std::string_view(a) == b;
    }

  private:
    char text_[66];
    int size_;
};

// The digits of `value` in a base from 2 to 62; none for another one.
inline Digits to_base(int64_t value, int base) noexcept {
    return Digits(value, base);
}

namespace detail {

inline kestu_error_t *from_base(const char *text, int base, int64_t &value) {
    char *end = nullptr;
    if (kestu_error_t *err = kestu_str_base62_to_int64(text, &end, base, &value))
        return err;
    if (end != text && *end == '\0')
        return nullptr;
    return kestu_error_createf_i(KESTU_ERROR_ERROR, KESTU_ERR_INTEGER_TEXT, 0, nullptr, nullptr,
                                 nullptr, "Cannot convert string '%s' to integer", text);
}

} // namespace detail

// The number that the whole of `text` is in a base from 2 to 62, or 0 for the base that it tells
// itself (kestu_str_base62_to_int64).
inline int64_t from_base(const detail::Terminated &text, int base) {
    int64_t value = 0;
    detail::check(detail::from_base(text, base, value));
    return value;
}

// As `from_base` above, but returns the error.
inline Expected<int64_t> from_base(std::nothrow_t, const detail::Terminated &text, int base) {
    int64_t value = 0;
    if (kestu_error_t *err = detail::from_base(text, base, value))
        return detail::failed(err);
    return value;
}

namespace detail {

inline kestu_error_t *unescape(std::string_view text, std::string &out) {
    out.resize(text.size()); // what is decoded is never longer
    size_t size = out.size() + 1;
    kestu_error_t *err = kestu_str_escape_parse(out.data(), &size, text.data(), text.size(), 0, 0);
    if (!err)
        out.resize(size - 1);
    return err;
}

inline kestu_error_t *escape(std::string_view text, std::string &out) {
    size_t size = 0;
    if (kestu_error_t *err = kestu_str_escape_unparse(nullptr, &size, text.data(), text.size()))
        return err;
    out.resize(size - 1);
    return kestu_str_escape_unparse(out.data(), &size, text.data(), text.size());
}

} // namespace detail

// Decodes the escapes of `text` (kestu_escape.h).
inline std::string unescape(std::string_view text) {
    std::string out;
    detail::check(detail::unescape(text, out));
    return out;
}

// As `unescape` above, but returns the error.
inline Expected<std::string> unescape(std::nothrow_t, std::string_view text) {
    std::string out;
    if (kestu_error_t *err = detail::unescape(text, out))
        return detail::failed(err);
    return out;
}

// Printable text that unescape turns back into `text`.
inline std::string escape(std::string_view text) {
    std::string out;
    detail::check(detail::escape(text, out));
    return out;
}

// As `escape` above, but returns the error.
inline Expected<std::string> escape(std::nothrow_t, std::string_view text) {
    std::string out;
    if (kestu_error_t *err = detail::escape(text, out))
        return detail::failed(err);
    return out;
}

// Whether the bytes are well-formed UTF-8.
inline bool is_utf8(std::string_view text) {
    return kestu_str_utf8_valid(text.data(), text.size()) != 0;
}

} // namespace KESTU_CPP
} // namespace kestu
