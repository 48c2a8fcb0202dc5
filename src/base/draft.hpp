// A text whose length must be known before there is memory for it.
#pragma once

#include "base/format.hpp"

#include <cerrno>
#include <cstring>

namespace kestu {

// Formats into a buffer of its own, which is enough for most texts; longer ones are formatted again
// when they are written.
class Draft {
  public:
    Draft(const char *format, va_list args) : format_(format) {
        va_copy(again_, args);
        formatted_ = format_text(buffer_, sizeof buffer_, format, args);
    }
    ~Draft() { va_end(again_); }
    Draft(const Draft &) = delete;
    Draft &operator=(const Draft &) = delete;

    // 0, or what errno says of a text that cannot be formatted.
    int failure() const { return formatted_.failure; }

    // The length of the text, or of what was produced of one that failed. Of one that is too long
    // for an int only the beginning is kept.
    size_t length() const { return failure() == ERANGE ? sizeof buffer_ - 1 : formatted_.length; }

    // Writes the text and a terminator. May be called once.
    void write(char *text) {
        const size_t size = length() + 1;
        if (size <= sizeof buffer_)
            std::memcpy(text, buffer_, size);
        else
            format_text(text, size, format_, again_);
    }

  private:
    const char *format_;
    va_list again_;
    Formatted formatted_;
    char buffer_[512];
};

} // namespace kestu
