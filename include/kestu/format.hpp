// Formatted text, checked when it is compiled.
//
//     std::string line = kestu::format("%'d pixels, %.2f bits of %.*s", 1234567, 7.25,
//                                      std::string_view("noise"));
//     char buffer[80];
//     size_t length = kestu::format_to(buffer, "%s: %zu", "bytes", line.size());
//
// The conversions are those of the library's engine (kestu_format.h). What it would not print as
// meant does not compile: an argument of another type, size or sign than its conversion takes, one
// too few or too many, `%Lf` and long doubles, `%n`, and conversions that it does not have. A
// std::string goes with `%s`; a std::string_view with `%.*s`, of which it is both arguments.
#pragma once

#include "../kestu_format.h"
#include "error.hpp"

#include <bit>
#include <cerrno>
#include <climits>
#include <concepts>
#include <cwchar>
#include <span>
#include <string>
#include <string_view>
#include <tuple>

namespace kestu {
inline namespace KESTU_CPP {
namespace detail {

enum class Shape : unsigned char {
    other,
    i8,
    u8,
    i16,
    u16,
    i32,
    u32,
    i64,
    u64,
    floating,
    text,
    view,
    wide_text,
    pointer,
};

template <typename T>
consteval Shape shape_of() {
    using Plain = std::decay_t<T>;
    if constexpr (std::integral<Plain>) {
        constexpr size_t size = std::countr_zero(sizeof(Plain));
        if constexpr (sizeof(Plain) > 8)
            return Shape::other;
        return static_cast<Shape>(1 + 2 * size + (std::is_signed_v<Plain> ? 0 : 1));
    } else if constexpr (std::same_as<Plain, double> || std::same_as<Plain, float>) {
        return Shape::floating;
    } else if constexpr (std::same_as<Plain, std::string_view>) {
        return Shape::view;
    } else if constexpr (std::same_as<Plain, std::string> || std::same_as<Plain, char *> ||
                         std::same_as<Plain, const char *>) {
        return Shape::text;
    } else if constexpr (std::same_as<Plain, wchar_t *> || std::same_as<Plain, const wchar_t *>) {
        return Shape::wide_text;
    } else if constexpr (std::is_pointer_v<Plain> &&
                         !std::is_function_v<std::remove_pointer_t<Plain>>) {
        return Shape::pointer;
    } else {
        return Shape::other;
    }
}

enum class Fault {
    none,
    too_few_arguments,
    too_many_arguments,
    wrong_argument,
    view_without_precision,
    layout_is_no_int,
    layout_is_too_large,
    unknown_conversion,
};

// Reads a format as the engine does and holds the arguments to it.
class FormatCheck {
  public:
    constexpr FormatCheck(const char *format, const Shape *shapes, size_t count)
        : at_(format), shapes_(shapes), count_(count) {}

    constexpr Fault run() {
        while (*at_ && fault_ == Fault::none)
            if (*at_++ == '%')
                check_field();
        expect(fault_ != Fault::none || next_ == count_, Fault::too_many_arguments);
        return fault_;
    }

  private:
    constexpr void check_field() {
        while (is_one_of("-+ #0'"))
            ++at_;
        read_number();
        is_view_ = false;
        if (*at_ == '.') {
            ++at_;
            is_view_ = *at_ == '*' && next_ < count_ && shapes_[next_] == Shape::view;
            if (is_view_)
                ++at_;
            else
                read_number();
        }
        const unsigned size = read_size();
        check_conversion(*at_ ? *at_++ : '\0', size);
    }

    constexpr bool is_one_of(const char *characters) const {
        for (; *characters; ++characters)
            if (*at_ == *characters)
                return true;
        return false;
    }

    constexpr void read_number() {
        if (*at_ == '*') {
            ++at_;
            expect(take() == Shape::i32, Fault::layout_is_no_int);
            return;
        }
        for (long number = 0; *at_ >= '0' && *at_ <= '9' && number <= INT_MAX; ++at_) {
            number = number * 10 + (*at_ - '0');
            expect(number <= INT_MAX, Fault::layout_is_too_large);
        }
    }

    // The bytes of an integer: 0 without a modifier.
    constexpr unsigned read_size() {
        if (*at_ == 'h') {
            ++at_;
            if (*at_ != 'h')
                return 2;
            ++at_;
            return 1;
        }
        if (*at_ == 'l') {
            at_ += at_[1] == 'l' ? 2 : 1;
            return 8;
        }
        if (is_one_of("jtz")) {
            ++at_;
            return 8;
        }
        return 0;
    }

    constexpr void check_conversion(char conversion, unsigned size) {
        switch (conversion) {
        case '%':
            return expect(!is_view_);
        case 'd':
        case 'i':
            return expect(is_integer(take(), size, true, false));
        case 'u':
            return expect(is_integer(take(), size, false, true));
        case 'o':
        case 'x':
        case 'X':
            return expect(is_integer(take(), size, true, true));
        case 'a':
        case 'A':
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
            return expect((size == 0 || size == 8) && take() == Shape::floating);
        case 'c':
            return expect(is_character(take(), size));
        case 's':
            return check_text(take(), size);
        case 'p':
            return expect(size == 0 && is_pointer(take()));
        default:
            return expect(false, Fault::unknown_conversion);
        }
    }

    static constexpr bool is_integer(Shape shape, unsigned size, bool may_be_signed,
                                     bool may_be_unsigned) {
        if (shape < Shape::i8 || shape > Shape::u64)
            return false;
        const auto number = static_cast<unsigned>(shape) - 1;
        const unsigned bytes = 1U << number / 2;
        const bool is_unsigned = number % 2 != 0;
        // What is smaller than an int arrives as one, which is right for either sign.
        if (size == 0 && bytes < 4)
            return is_unsigned || may_be_signed;
        return bytes == (size == 0 ? 4 : size) && (is_unsigned ? may_be_unsigned : may_be_signed);
    }

    static constexpr bool is_character(Shape shape, unsigned size) {
        return size == 8
                   ? shape == Shape::i32 || shape == Shape::u32
                   : size == 0 && (shape == Shape::i8 || shape == Shape::u8 || shape == Shape::i32);
    }

    static constexpr bool is_pointer(Shape shape) {
        return shape == Shape::pointer || shape == Shape::text || shape == Shape::wide_text;
    }

    constexpr void check_text(Shape shape, unsigned size) {
        if (size == 8)
            return expect(shape == Shape::wide_text);
        expect(shape != Shape::view || is_view_, Fault::view_without_precision);
        expect(size == 0 && (shape == Shape::text || shape == Shape::view));
    }

    constexpr void expect(bool is_so, Fault otherwise = Fault::wrong_argument) {
        if (!is_so && fault_ == Fault::none)
            fault_ = otherwise;
    }

    constexpr Shape take() {
        expect(next_ < count_, Fault::too_few_arguments);
        return next_ < count_ ? shapes_[next_++] : Shape::other;
    }

    const char *at_;
    const Shape *shapes_;
    size_t count_;
    size_t next_ = 0;
    bool is_view_ = false; // the field takes a view for its precision and its text
    Fault fault_ = Fault::none;
};

template <typename... Arguments>
constexpr Fault fault_of(const char *format) {
    constexpr Shape shapes[] = {shape_of<Arguments>()..., Shape::other};
    return FormatCheck(format, shapes, sizeof...(Arguments)).run();
}

// Not constexpr, so that a format that reaches one of them does not compile.
inline void the_format_has_too_few_arguments() {}
inline void the_format_has_too_many_arguments() {}
inline void the_argument_does_not_fit_its_conversion() {}
inline void a_string_view_needs_a_precision() {}
inline void the_width_or_precision_is_no_int() {}
inline void the_width_or_precision_is_too_large() {}
inline void the_conversion_is_not_known() {}

consteval void refuse(Fault fault) {
    switch (fault) {
    case Fault::none:
        return;
    case Fault::too_few_arguments:
        return the_format_has_too_few_arguments();
    case Fault::too_many_arguments:
        return the_format_has_too_many_arguments();
    case Fault::wrong_argument:
        return the_argument_does_not_fit_its_conversion();
    case Fault::view_without_precision:
        return a_string_view_needs_a_precision();
    case Fault::layout_is_no_int:
        return the_width_or_precision_is_no_int();
    case Fault::layout_is_too_large:
        return the_width_or_precision_is_too_large();
    case Fault::unknown_conversion:
        return the_conversion_is_not_known();
    }
}

// What goes to the engine for an argument.
template <typename T>
auto engine_arguments(const T &argument) noexcept {
    if constexpr (std::same_as<T, std::string>)
        return std::tuple(argument.c_str());
    else if constexpr (std::same_as<T, std::string_view>)
        return std::tuple(static_cast<int>(argument.size() < INT_MAX ? argument.size() : INT_MAX),
                          argument.data() ? argument.data() : "");
    else if constexpr (std::is_array_v<T>)
        return std::tuple(std::decay_t<const T>(argument));
    else
        return std::tuple(argument);
}

} // namespace detail

// A format that has been checked for its arguments; it is made from a literal.
template <typename... Arguments>
class Format {
  public:
    // Checks `text` while the program is compiled: what does not fit its arguments does not
    // compile.
    template <typename Text>
    requires std::convertible_to<const Text &, const char *>
    consteval Format(const Text &text) : text_(text) {
        detail::refuse(detail::fault_of<Arguments...>(text_));
    }

    // The format.
    constexpr const char *text() const noexcept { return text_; }

  private:
    const char *text_;
};

namespace detail {

// As rpl_snprintf; on failure errno tells why.
template <typename... Arguments>
int print_into(char *out, size_t size, const char *format, const Arguments &...arguments) noexcept {
    return std::apply(
        [=](auto... all) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // it has been checked
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wdouble-promotion"
            return rpl_snprintf(out, size, format, all...);
#pragma GCC diagnostic pop
        },
        std::tuple_cat(engine_arguments(arguments)...));
}

[[gnu::cold]] inline kestu_error_t *format_error() noexcept {
    return kestu_error_aprwrapf_i(errno, 0, nullptr, nullptr, "Cannot format text");
}

template <typename... Arguments>
kestu_error_t *format_string(std::string &text, const char *format, const Arguments &...arguments) {
    char few[256];
    const int length = print_into(few, sizeof few, format, arguments...);
    if (length < 0) [[unlikely]]
        return format_error();
    const auto size = static_cast<size_t>(length);
    if (size < sizeof few) {
        text.assign(few, size);
    } else {
        text.resize(size);
        print_into(text.data(), size + 1, format, arguments...);
    }
    return nullptr;
}

} // namespace detail

// The text of a format and its arguments. Fails for a floating value whose integer part is 2^64 or
// more, for a width or precision beyond INT_MAX, and for a text of as many characters; errno is
// then set as by rpl_snprintf.
template <typename... Arguments>
std::string format(Format<std::type_identity_t<Arguments>...> format,
                   const Arguments &...arguments) {
    std::string text;
    detail::check(detail::format_string(text, format.text(), arguments...));
    return text;
}

// As `format` above, but returns the error.
template <typename... Arguments>
Expected<std::string> format(std::nothrow_t, Format<std::type_identity_t<Arguments>...> format,
                             const Arguments &...arguments) {
    std::string text;
    if (kestu_error_t *err = detail::format_string(text, format.text(), arguments...))
        return detail::failed(err);
    return text;
}

// Writes the text and a terminator to `out`, as far as there is room. Returns the length of the
// full text: out.size() or more means that it was cut.
template <typename... Arguments>
size_t format_to(std::span<char> out, Format<std::type_identity_t<Arguments>...> format,
                 const Arguments &...arguments) {
    const int length = detail::print_into(out.data(), out.size(), format.text(), arguments...);
    if (length < 0) [[unlikely]]
        detail::raise(detail::format_error());
    return static_cast<size_t>(length);
}

// As `format_to` above, but returns the error.
template <typename... Arguments>
Expected<size_t> format_to(std::nothrow_t, std::span<char> out,
                           Format<std::type_identity_t<Arguments>...> format,
                           const Arguments &...arguments) {
    const int length = detail::print_into(out.data(), out.size(), format.text(), arguments...);
    if (length < 0) [[unlikely]]
        return detail::failed(detail::format_error());
    return static_cast<size_t>(length);
}

} // namespace KESTU_CPP
} // namespace kestu
