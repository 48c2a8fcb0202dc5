// Earlier lines.
#pragma once

#include "array.hpp"

#include "kestu_error.h"

namespace kestu::edit {

class History {
  public:
    ~History() { clear(); }

    // Adds a line in place of an equal one; false when no memory is left.
    [[nodiscard]] bool add(std::string_view line);
    void limit(size_t lines);

    size_t count() const { return lines_.size(); }
    std::string_view line(size_t index) const { return {lines_[index].text, lines_[index].size}; }

    // The nearest before or behind `index` that `fits`; count() for none.
    template <typename Fits>
    size_t before(size_t index, Fits fits) const {
        while (index-- > 0)
            if (fits(line(index)))
                return index;
        return count();
    }
    template <typename Fits>
    size_t behind(size_t index, Fits fits) const {
        while (++index < count())
            if (fits(line(index)))
                return index;
        return count();
    }

    kestu_error_t *load(const char *path);
    kestu_error_t *save(const char *path);

  private:
    struct Entry {
        char *text; // of its own, with a zero byte behind
        size_t size;
        bool saved;
    };
    void remove(size_t index);
    void clear();
    bool take_lines(std::string_view content);
    kestu_error_t *append_to(int file, const char *path);
    kestu_error_t *shorten(int file, const char *path);

    Array<Entry> lines_;
    size_t limit_ = 1000;
};

} // namespace kestu::edit
