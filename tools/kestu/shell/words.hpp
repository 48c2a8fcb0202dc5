// A command line as words.
#pragma once

#include "kestu_error.h"
#include "kestu_prsd.h"

#include <string>
#include <vector>

namespace program {

// Splits lines by the library's parser of parameters: words are parted by blanks, or stand in
// double quotes; a backslash where a word could begin asks for another line, and so does an open
// quote. The parser sees one character after the other and only says what each is, so that words
// keep their text: as a number, 007 would become 7.
class Words {
  public:
    Words();
    ~Words() { apr_pool_destroy(pool_); }
    Words(const Words &) = delete;
    Words &operator=(const Words &) = delete;

    // Takes one more line, without its end.
    kestu_error_t *add(const std::string &line);

    // Whether the command goes on in another line.
    bool incomplete() const { return parser_.state != KESTU_PRSD_BETWEEN; }

    // The words since the last call.
    std::vector<std::string> take();

  private:
    kestu_error_t *add(char character);

    apr_pool_t *pool_ = nullptr;
    kestu_prsd_t parser_ = {};
    std::vector<std::string> words_;
    std::string word_;
};

} // namespace program
