// Which elements of a chain only repeat a code that was printed.
#pragma once

#include "kestu_error.h"

#include <cstddef>
#include <cstdint>

namespace kestu {

// Finds the elements without a message whose code an element without a message had before. Takes
// linear time, whatever codes a stranger chose; only when no memory is left for that, it looks
// back.
class Repeats {
  public:
    explicit Repeats(const kestu_error_t *head);
    ~Repeats();
    Repeats(const Repeats &) = delete;
    Repeats &operator=(const Repeats &) = delete;

    // To be asked once for every element without a message, from the head on.
    bool next_is_repeat(const kestu_error_t &err);

  private:
    struct Entry {
        uint32_t code;
        uint32_t place; // among the elements without a message
    };

    void list(Entry *entries) const;
    void mark(const Entry *sorted, size_t count);
    bool stands_before(const kestu_error_t &err) const;

    const kestu_error_t *head_;
    bool *marks_ = nullptr; // by place; null: look back
    size_t next_ = 0;
};

} // namespace kestu
