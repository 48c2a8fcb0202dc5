// A text whose length must be known before there is memory for it.
#pragma once

#include "kestu_format.h"

#include <cstdarg>
#include <cstring>

namespace kestu {

// Formats into a buffer of its own, which is enough for most texts; longer ones are formatted again
// when they are written.
class Draft {
  public:
    Draft(const char *text_format, va_list args) : format(text_format) {
        va_copy(again, args);
        size = rpl_vsnprintf(buffer, sizeof buffer, format, args);
    }
    ~Draft() { va_end(again); }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    // The length of the text, or -1 with errno set when it cannot be formatted.
    int length() const { return size; }

    // Writes the text and a terminator. May be called once, when there is a length.
    void write(char *text) {
        const size_t bytes = static_cast<size_t>(size) + 1;
        if (bytes <= sizeof buffer)
            std::memcpy(text, buffer, bytes);
        else
            rpl_vsnprintf(text, bytes, format, again);
    }

  private:
    const char *format;
    va_list again;
    int size;
    char buffer[512];
};

} // namespace kestu
