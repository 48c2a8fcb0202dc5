// The directory of a page as it stands in the file, tag by tag.
#pragma once

#include "handle.hpp"

namespace kestu::tiff {

struct Entry {
    uint16_t tag, type;
    uint64_t count;
    uint64_t at; // where the values stand in the file
    bool inside; // within the entry itself
};

class Directory {
  public:
    // That of the page at which `handle` stands.
    explicit Directory(Handle &handle);

    bool big_tiff() const { return big_; }
    uint64_t count() const { return count_; }

    // False when the file ends before the entry does.
    bool entry(uint64_t index, Entry &entry) const;

    // Copies the first values of an entry, in the byte order of this machine.
    bool read_values(const Entry &entry, void *out, uint64_t count) const;

    // The bytes that a value of a type takes; 0 for unknown types.
    static uint64_t size_of(uint16_t type);

    // Whether no list of strips and no text of the software stands within its entry but for lists
    // of one: the plain reader looks for them elsewhere.
    bool lists_stand_apart() const;

  private:
    bool read(void *out, uint64_t size, uint64_t at) const;
    template <typename Number>
    bool number(Number &out, uint64_t at) const;

    const Handle &handle_;
    bool big_ = false;
    bool swapped_ = false;
    uint64_t first_ = 0; // entry
    uint64_t count_ = 0;
};

} // namespace kestu::tiff
