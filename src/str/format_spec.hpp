// Reading a format: the arguments behind it and its conversion specifications.
#pragma once

#include <cstdarg>
#include <cstdint>

namespace kestu {

// The size of an integer argument as the length modifier gives it. All of l, ll, j, t and z mean 64
// bits; `L` means nothing, since there are no long doubles here.
enum class ArgumentSize : uint8_t { as_int, as_char, as_short, as_64 };

// The arguments of a format, fetched one after the other.
class Arguments {
  public:
    explicit Arguments(va_list source) { va_copy(list, source); }
    ~Arguments() { va_end(list); }
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    int64_t next_signed(ArgumentSize size);
    uint64_t next_unsigned(ArgumentSize size);
    int next_int() { return va_arg(list, int); }
    double next_double() { return va_arg(list, double); }

    template <typename T>
    T *next_pointer() {
        return va_arg(list, T *);
    }

  private:
    va_list list;
};

// One conversion specification: what stands from a `%` to its conversion character.
struct Spec {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    bool group = false;
    ArgumentSize size = ArgumentSize::as_int;
    char conversion = '\0';
    int width = 0;
    int precision = -1; // negative when none is given
};

enum class SpecState { whole, cut_off, too_large };

// Reads the specification that begins at `format`, just behind its `%`, and moves `format` behind
// it. It is cut off when the format ends first, and too large when a number in it is above INT_MAX.
SpecState read_spec(const char *&format, Arguments &arguments, Spec &spec);

} // namespace kestu
