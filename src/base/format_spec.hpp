// Reading a format: the arguments behind it and its conversion specifications.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <type_traits>

namespace kestu {

// The size of an integer argument as the length modifier gives it. All of l, ll, j, t and z mean 64
// bits; `L` means nothing, since there are no long doubles here.
enum class ArgumentSize : uint8_t { as_int, as_char, as_short, as_64 };

// The arguments of a format, fetched one after the other from where they are: a copy of a list that
// has just been made would wait until that is whole in memory.
class Arguments {
  public:
    explicit Arguments(va_list source) : list_(source) {}
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    int next_int() { return va_arg(list_, int); }
    double next_double() { return va_arg(list_, double); }

    template <typename T>
    T *next_pointer() {
        return va_arg(list_, T *);
    }

    int64_t next_signed(ArgumentSize size) {
        if (size == ArgumentSize::as_64)
            return va_arg(list_, int64_t);
        const int value = va_arg(list_, int);
        return size == ArgumentSize::as_int    ? value
               : size == ArgumentSize::as_char ? static_cast<signed char>(value)
                                               : static_cast<short>(value);
    }

    uint64_t next_unsigned(ArgumentSize size) {
        if (size == ArgumentSize::as_64)
            return va_arg(list_, uint64_t);
        const unsigned value = va_arg(list_, unsigned);
        return size == ArgumentSize::as_int    ? value
               : size == ArgumentSize::as_char ? static_cast<unsigned char>(value)
                                               : static_cast<unsigned short>(value);
    }

  private:
    std::decay_t<va_list> list_;
};

// One conversion specification: what stands from a `%` to its conversion character.
struct Spec {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    bool group = false;
    bool bare = false; // none of the above, no width and no precision
    ArgumentSize size = ArgumentSize::as_int;
    char conversion = '\0';
    int width = 0;
    int precision = -1; // negative when none is given
};

// Reads flags, width and precision. False when a number among them is above INT_MAX.
[[nodiscard]] bool read_layout(const char *&format, Arguments &arguments, Spec &spec);

inline ArgumentSize read_size(const char *&format) {
    switch (*format) {
    case 'h':
        ++format;
        if (*format != 'h')
            return ArgumentSize::as_short;
        ++format;
        return ArgumentSize::as_char;
    case 'l':
        format += format[1] == 'l' ? 2 : 1;
        return ArgumentSize::as_64;
    case 'j':
    case 't':
    case 'z':
        ++format;
        return ArgumentSize::as_64;
    case 'L':
        ++format;
        return ArgumentSize::as_int;
    default:
        return ArgumentSize::as_int;
    }
}

enum class SpecState { whole, cut_off, too_large };

// Reads the specification that begins at `format`, just behind its `%`, and moves `format` behind
// it. It is cut off when the format ends first, and too large when a number in it is above INT_MAX.
inline SpecState read_spec(const char *&format, Arguments &arguments, Spec &spec) {
    spec.bare = *format >= 'A'; // flags, digits, `*` and `.` all come before the letters
    if (!spec.bare && !read_layout(format, arguments, spec))
        return SpecState::too_large;
    spec.size = read_size(format);
    spec.conversion = *format;
    if (spec.conversion == '\0')
        return SpecState::cut_off;
    ++format;
    return SpecState::whole;
}

} // namespace kestu
