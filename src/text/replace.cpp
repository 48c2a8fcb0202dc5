// Replacement of substrings and of characters.
#include "kestu_str.h"

#include "base/kept_errno.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <emmintrin.h>
#include <string_view>
#include <utility>

using namespace kestu;

namespace {

using Bytes [[gnu::vector_size(16)]] = unsigned char;

Bytes bytes_at(const char *s) {
    Bytes bytes;
    std::memcpy(&bytes, s, sizeof bytes);
    return bytes;
}

Bytes all(char c) {
    return Bytes{} + static_cast<unsigned char>(c);
}

unsigned mask(Bytes bytes) {
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(bytes)));
}

// Two blocks are looked at in one step.
constexpr size_t step = 2 * sizeof(Bytes);

struct Blocks {
    Bytes low, high;

    explicit Blocks(const char *s) : low(bytes_at(s)), high(bytes_at(s + sizeof low)) {}
    void store(char *to) const {
        std::memcpy(to, &low, sizeof low);
        std::memcpy(to + sizeof low, &high, sizeof high);
    }
};

// What is looked for.
class Pattern {
  public:
    explicit Pattern(std::string_view text)
        : text_(text), first_(all(text.front())), last_(all(text.back())) {
        const size_t size = std::min(text.size(), sizeof word_);
        std::memcpy(&word_, text.data(), size);
        std::memset(&in_word_, 0xFF, size);
    }
    std::string_view text() const { return text_; }

    // One bit for each place of the blocks at `s` where both its first and its last byte are.
    unsigned candidates(const Blocks &blocks, const char *s) const {
        const Blocks ends(s + text_.size() - 1);
        return mask((blocks.low == first_) & (ends.low == last_)) |
               mask((blocks.high == first_) & (ends.high == last_)) << sizeof(Bytes);
    }

    // Whether it stands at a place that eight bytes can be read from.
    bool is_at(const char *s) const {
        uint64_t word = 0;
        std::memcpy(&word, s, sizeof word);
        return (word & in_word_) == word_ &&
               (text_.size() <= sizeof word || !std::memcmp(s, text_.data(), text_.size()));
    }

  private:
    std::string_view text_;
    Bytes first_, last_;
    uint64_t word_ = 0, in_word_ = 0; // its beginning, and the bytes that belong to it
};

// A text in which all of `from` become `to`, made in one pass. What stands at a place in the text
// goes `shift` bytes further on in what is made, which always has room for the rest of the text.
class Replacing {
  public:
    Replacing(std::string_view text, std::string_view from, std::string_view to)
        : text_(text), from_(from), to_(to) {
        std::memcpy(&short_to_, to.data(), std::min(to.size(), sizeof short_to_));
    }
    ~Replacing() { std::free(made_); }
    Replacing(const Replacing &) = delete;
    Replacing &operator=(const Replacing &) = delete;

    // What malloc gave for it; null without memory.
    char *run() {
        // Some growth is foreseen, since a larger block may cost a copy.
        const size_t growth = to_.size() > from_.text().size() ? text_.size() / 16 + 64 : 0;
        if (!reserve(text_.size() + growth) ||
            (from_.text().size() <= longest && !replace_in_blocks()) || !replace_in_rest())
            return nullptr;
        const size_t length = text_.size() + shift_;
        made_[length] = '\0';
        if (capacity_ - length > length / 8 + 64)
            reserve(length);
        return std::exchange(made_, nullptr);
    }

  private:
    // Of longer patterns false beginnings may cost more than what the C library does.
    static constexpr size_t longest = 64;

    bool reserve(size_t capacity) {
        void *made = std::realloc(made_, capacity + 1);
        if (!made)
            return false;
        made_ = static_cast<char *>(made);
        capacity_ = capacity;
        return true;
    }

    // Puts `to` in the place of the occurrence at `at` and goes on behind it. False without memory.
    bool put(size_t at) {
        const size_t needed = text_.size() - from_.text().size() + shift_ + to_.size();
        if (needed > capacity_ && !reserve(needed + needed / 2))
            return false;
        char *out = made_ + at + shift_;
        if (to_.size() <= sizeof(Bytes) && at + from_.text().size() + sizeof(Bytes) <= text_.size())
            std::memcpy(out, &short_to_, sizeof short_to_); // the rest of the text comes over it
        else
            std::memcpy(out, to_.data(), to_.size());
        next_ = at + from_.text().size();
        shift_ += to_.size() - from_.text().size();
        return true;
    }

    // Goes from block to block, whatever is found, so that the processor need not wait for it.
    bool replace_in_blocks() {
        const Pattern from = from_; // out of the way of what is written, as all that follows
        const char *const text = text_.data();
        const size_t behind = 2 * step + from.text().size();
        const size_t end = text_.size() < behind ? 0 : text_.size() - behind + 1;
        size_t at = 0;
        while (at < end) {
            unsigned found = copy_to_candidates(from, text, at, end);
            for (; found != 0; found &= found - 1) {
                const size_t place = at + static_cast<size_t>(std::countr_zero(found));
                if (place < next_ || !from.is_at(text + place))
                    continue;
                if (!put(place))
                    return false;
                Blocks(text + next_).store(made_ + next_ + shift_);
            }
            at += step;
        }
        next_ = std::max(next_, at);
        return true;
    }

    // Copies blocks up to those that hold candidates, or to the last ones before `end`.
    [[gnu::always_inline]] unsigned copy_to_candidates(const Pattern &from, const char *text,
                                                       size_t &at, size_t end) const {
        char *const made = made_ + shift_;
        const size_t next = next_;
        for (;; at += step) {
            const Blocks blocks(text + at);
            if (at >= next)
                blocks.store(made + at);
            const unsigned found = from.candidates(blocks, text + at);
            if (found != 0 || at + step >= end)
                return found;
        }
    }

    bool replace_in_rest() {
        const auto copy_up_to = [this](size_t at) {
            std::memcpy(made_ + next_ + shift_, text_.data() + next_, at - next_);
        };
        while (const void *found = memmem(text_.data() + next_, text_.size() - next_,
                                          from_.text().data(), from_.text().size())) {
            const auto at = static_cast<size_t>(static_cast<const char *>(found) - text_.data());
            copy_up_to(at);
            if (!put(at))
                return false;
        }
        copy_up_to(text_.size());
        return true;
    }

    const std::string_view text_;
    const Pattern from_;
    const std::string_view to_;
    char *made_ = nullptr;
    size_t capacity_ = 0;
    size_t next_ = 0;  // what stands before it in the text is done
    size_t shift_ = 0; // may be below 0, modulo 2^64
    Bytes short_to_ = {};
};

} // namespace

char *kestu_str_replace_all(const char *s, const char *from, const char *to) {
    const KeptErrno kept;
    return from && to && *from ? Replacing(s, from, to).run() : strdup(s);
}

char *kestu_str_replace(const char *s, const char *from, const char *to) {
    const KeptErrno kept;
    const char *const found = std::strstr(s, from);
    const std::string_view parts[] = {{s, found ? static_cast<size_t>(found - s) : std::strlen(s)},
                                      found ? to : "",
                                      found ? found + std::strlen(from) : ""};
    auto *result =
        static_cast<char *>(std::malloc(parts[0].size() + parts[1].size() + parts[2].size() + 1));
    if (!result)
        return nullptr;
    char *out = result;
    for (const std::string_view part : parts)
        out = static_cast<char *>(mempcpy(out, part.data(), part.size()));
    *out = '\0';
    return result;
}

char *kestu_str_replace_char(char *s, char from, char to) {
    if (from == '\0' || from == to)
        return s;
    for (char *c = s; (c = std::strchr(c, from)) != nullptr; *c = to) {
    }
    return s;
}
