// A file that is written from front to back.
#pragma once

#include "kestu_error.h"

#include <cstdio>

struct iovec;

namespace kestu {

class OutputFile {
  public:
    OutputFile() = default;
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    // Makes the file at `path`, or empties the one that is there. KESTU_ERR_OPEN when it cannot be
    // opened.
    [[nodiscard]] kestu_error_t *open(const char *path);

    // Closes what was written. Returns `err`, or without one KESTU_ERR_WRITE when the system only
    // now reports that it could not write.
    [[nodiscard]] kestu_error_t *close(kestu_error_t *err);

    // Appends what the segments hold. Returns how many bytes were moved, which may be fewer than
    // the segments have; 0 when none.
    size_t gather(const iovec *segments, int count);

  private:
    std::FILE *stream_ = nullptr; // its buffer stays empty
};

} // namespace kestu
