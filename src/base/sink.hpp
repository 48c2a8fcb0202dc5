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
        : start_(size > 0 ? buffer : aside_), at_(start_),
          end_(start_ + (size > 0 ? std::min(size - 1, max_room) : 0)) {}
    Sink(const Sink &) = delete;
    Sink &operator=(const Sink &) = delete;

    // The length of the text so far, stored or not.
    size_t length() const { return static_cast<size_t>(at_ - start_) + lost_; }

    // Whether all that is put from now on is counted only.
    bool full() const { return at_ == end_; }

    void put(char c) {
        if (at_ < end_)
            *at_++ = c;
        else
            ++lost_;
    }

    void put(std::string_view text) {
        const size_t stored = std::min(text.size(), room());
        copy(at_, text.data(), stored);
        at_ += stored;
        lost_ += text.size() - stored;
    }

    void fill(char c, size_t n) {
        const size_t stored = std::min(n, room());
        std::memset(at_, c, stored);
        at_ += stored;
        lost_ += n - stored;
    }

    // Lets `write` write exactly the next `n` characters, at most max_in_place, to where they
    // belong, or aside when the buffer is too small for them.
    template <typename Write>
    void put_in_place(size_t n, Write write) {
        if (n <= room()) {
            write(at_);
            at_ += n;
        } else {
            write(aside_);
            put({aside_, n});
        }
    }

    void terminate() { *at_ = '\0'; }

  private:
    static constexpr size_t max_room = PTRDIFF_MAX / 2;

    static void copy(char *to, const char *from, size_t n);
    size_t room() const { return static_cast<size_t>(end_ - at_); }

    char *start_;
    char *at_;
    char *end_;
    size_t lost_ = 0;
    char aside_[max_in_place]; // takes the terminator too when there is no buffer
};

} // namespace kestu
