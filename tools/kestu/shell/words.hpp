// A command line as words.
#pragma once

#include <string>
#include <vector>

namespace program {

// Splits rows into words as other shells do: blanks part them, quotes and backslashes keep text
// together, # begins a comment, and names with *, ? and [ stand for the files that they match. What
// stands behind | or > is not split.
class Words {
  public:
    // Takes one more row, without its end.
    void add(const std::string &row);

    // Whether the command goes on in another row: in quotes, and behind a backslash.
    bool incomplete() const { return state_ != State::between || goes_on_; }

    // The words since the last call. A pattern that matches nothing stays as it is.
    std::vector<std::string> take();

    // From | or > on, what was behind the words; empty for nothing.
    std::string take_rest();

  private:
    enum class State { between, inside, single, quoted };
    void begin_word();
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
    std::vector<Word> words_;
    std::string rest_;
};

} // namespace program
