// Where formatted text goes: a buffer with a bound, or nowhere when only the length is asked for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace kestu {

class Sink {
  public:
    // `buffer` may be null when `size` is 0. Nothing is computed from buffer + size: callers that
    // know that the text fits pass the largest size there is.
    Sink(char *buffer, size_t size)
        : start(buffer), room(size > 0 ? size - 1 : 0), terminated(size > 0) {}

    // The length of the text so far, stored or not.
    size_t length() const { return count; }

    void put(char c) {
        if (count < room)
            start[count] = c;
        ++count;
    }

    void put(std::string_view text) {
        if (count < room)
            std::memcpy(start + count, text.data(), std::min(text.size(), room - count));
        count += text.size();
    }

    void fill(char c, size_t n) {
        if (n > 0 && count < room)
            std::memset(start + count, c, std::min(n, room - count));
        count += n;
    }

    void terminate() {
        if (terminated)
            start[std::min(count, room)] = '\0';
    }

  private:
    char *start;
    size_t room; // for characters before the terminator
    bool terminated;
    size_t count = 0;
};

} // namespace kestu
