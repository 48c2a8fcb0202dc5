// The text of a line with its cursor, what can be undone, and what was killed.
#pragma once

#include "array.hpp"

namespace kestu::edit {

// A ring of the last texts that were killed.
class KillRing {
  public:
    enum { size = 16 };

    // Adds a text, or joins it to the newest, in front of it or behind it.
    enum class How { alone, in_front, behind };
    [[nodiscard]] bool add(std::string_view text, How how);

    // The text that was killed `age` kills ago, from the newest, around and around.
    std::string_view get(size_t age) const;
    bool empty() const { return count_ == 0; }
    void wipe();

  private:
    Bytes texts_[size];
    size_t newest_ = 0;
    size_t count_ = 0;
};

// The cursor always stands between clusters. Functions that change return false when no memory is
// left, and have then changed nothing.
class Line {
  public:
    std::string_view text() const { return text_.view(); }
    size_t cursor() const { return cursor_; }
    void move_to(size_t place); // or to the boundary behind it

    // Puts `with` in place of `length` bytes at `at`, the cursor behind it. Changes that are typed
    // one behind the other are undone at once.
    enum class Kind { typed, other };
    [[nodiscard]] bool replace(size_t at, size_t length, std::string_view with, Kind kind);
    [[nodiscard]] bool insert(std::string_view with, Kind kind) {
        return replace(cursor_, 0, with, kind);
    }
    void undo();

    // Ends what is typed at once: the next change is undone alone.
    void end_typing() { typing_ = false; }

    // Empties it, with nothing to undo.
    void clear();
    void wipe();

    // Ended by a zero byte that does not count.
    const char *c_text() const { return text_.data() ? text_.data() : ""; }

    size_t left(size_t from) const;
    size_t right(size_t from) const;
    size_t word_left(size_t from) const;
    size_t word_right(size_t from) const;
    size_t blank_left(size_t from) const;
    size_t row_begin(size_t from) const;
    size_t row_end(size_t from) const;

  private:
    struct Change {
        size_t at;
        size_t removed;  // bytes, which stand at the end of removed_
        size_t inserted; // bytes
        size_t cursor;   // before it
    };
    template <typename Is>
    size_t last_begin(size_t from, Is is) const;
    // Room for it was there before the text.
    void end_text() {
        if (text_.data())
            text_.data()[text_.size()] = '\0';
    }
    [[nodiscard]] bool remember(size_t at, size_t length, size_t inserted);

    Bytes text_;
    size_t cursor_ = 0;
    Array<Change> changes_;
    Bytes removed_;
    bool typing_ = false;
};

} // namespace kestu::edit
