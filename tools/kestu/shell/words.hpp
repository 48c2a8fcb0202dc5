// A command line as words.
#pragma once

#include <string>
#include <vector>

namespace program {

// What stands in front of a cursor.
struct TypedWords {
    std::vector<std::string> before; // the whole words of the command
    std::string last;                // the one at the cursor; empty between words
    size_t begin = 0;                // where that is written, quotes included
    char quote = '\0';               // the one that is open
    bool behind_command = false;     // in what is not split
};

// Splits rows into words as other shells do: blanks part them, quotes and backslashes keep text
// together, # begins a comment, and names with *, ? and [ stand for the files that they match. What
// stands behind | or > is not split.
class Words {
  public:
    // Takes one more row, without its end.
    void add(const std::string &row);

    // Whether the command goes on in another row: in quotes, and behind a backslash.
    bool incomplete() const { return state_ != State::between || goes_on_; }

    // The words when `text`, one row or several, goes on as far as a cursor.
    TypedWords typed(const std::string &text) const;

    // The words since the last call. A pattern that matches nothing stays as it is.
    std::vector<std::string> take();

    // From | or > on, what was behind the words; empty for nothing.
    std::string take_rest();

  private:
    enum class State { between, inside, single, quoted };
    void scan(const std::string &row);
    void begin_word(size_t at);
    void end_word();
    void put(char c, bool plain);
    size_t take_plain(const std::string &row, size_t at);

    struct Word {
        std::string text;
        std::string pattern; // in which a backslash stands before what was quoted
        bool matches = false;
    };
    State state_ = State::between;
    bool goes_on_ = false;
    size_t begin_ = 0; // of the last word, in the row that was scanned last
    std::vector<Word> words_;
    std::string rest_;
};

} // namespace program
