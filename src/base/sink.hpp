// Where formatted text goes: a buffer with a bound, or nowhere when only the length is asked for.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kestu {

class Sink {
  public:
    // The most characters that can be written in place at once.
    static constexpr size_t max_in_place = 64;

    // `buffer` may be null when `size` is 0. Callers that know that the text fits pass sizes beyond
    // all memory; the end is kept where pointers can still reach it.
    Sink(char *buffer, size_t size)
        : start(size > 0 ? buffer : aside), at(start),
          end(start + (size > 0 ? std::min(size - 1, max_room) : 0)) {}
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    // The length of the text so far, stored or not.
    size_t length() const { return static_cast<size_t>(at - start) + lost; }

    // Whether all that is put from now on is counted only.
    bool full() const { return at == end; }

    void put(char c) {
        if (at < end)
            *at++ = c;
        else
            ++lost;
    }

    void put(std::string_view text) {
        const size_t stored = std::min(text.size(), room());
        copy(at, text.data(), stored);
        at += stored;
        lost += text.size() - stored;
    }

    void fill(char c, size_t n) {
        const size_t stored = std::min(n, room());
        std::memset(at, c, stored);
        at += stored;
        lost += n - stored;
    }

    // Lets `write` write exactly the next `n` characters, at most max_in_place, to where they
    // belong, or aside when the buffer is too small for them.
    template <typename Write>
    void put_in_place(size_t n, Write write) {
        if (n <= room()) {
            write(at);
            at += n;
        } else {
            write(aside);
            put({aside, n});
        }
    }

    void terminate() { *at = '\0'; }

  private:
    static constexpr size_t max_room = PTRDIFF_MAX / 2;

    static void copy(char *to, const char *from, size_t n);
    size_t room() const { return static_cast<size_t>(end - at); }

    char *start;
    char *at;
    char *end;
    size_t lost = 0;
    char aside[max_in_place]; // takes the terminator too when there is no buffer
};

} // namespace kestu
