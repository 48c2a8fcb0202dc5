// A person at a terminal on which a program runs.
#pragma once

#include "support/screen.hpp"

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>
#include <termios.h>

namespace kestu::test {

// A pseudo-terminal with one program in the foreground. Nothing here waits for time: what a program
// does is waited for as output. A test whose program stays silent for ever is ended by CTest.
class Terminal {
  public:
    Terminal(int columns, int rows);
    ~Terminal();
    Terminal(const Terminal &) = delete;
    Terminal &operator=(const Terminal &) = delete;

    // Runs `body` in a child process until the terminal goes. Its reads of keys are marked when it
    // calls mark() before each, and it tells results by report().
    void run(const std::function<void()> &body);
    static void mark();
    static void report(const std::string &result);

    // Runs a command, and in its environment the settings ("NAME=value").
    void run(const std::vector<std::string> &command,
             const std::vector<std::string> &environment = {});

    // Sends the bytes of one key, or of a paste, at once.
    void type(std::string_view bytes) const;

    // Change the window, or send a signal, once the program sleeps, as it does while it reads.
    void resize(int columns, int rows);
    void signal(int number) const;

    // Closes the window.
    void hang_up();

    // Follow the output: to the next mark, to the next result, to the moment when what the screen
    // shows ends with `text`, to the end of a command. The last returns its exit status, or 128 and
    // the signal.
    void wait_for_mark();
    std::string wait_for_report();
    void wait_for_text(const std::string &text);
    int wait_for_end();

    // Waits until the program gets keys one by one; before, the terminal itself shows them.
    void wait_for_keys() const;

    // Presses a key and waits for the next mark; what the screen shows then.
    std::string press(std::string_view key);

    std::string shown() const { return screen_.shown(); }
    termios settings() const;
    void change_settings(const std::function<void(termios &)> &change) const;

  private:
    void start(const std::function<void()> &body);
    void wait_for_sleep() const;
    bool follow();
    void follow_until(const std::function<bool()> &condition);
    void take(char c);

    Screen screen_;
    int master_ = -1;
    int slave_ = -1;
    pid_t child_ = -1;
    size_t marks_ = 0;
    bool reporting_ = false;
    std::string result_;
    std::deque<std::string> results_;
};

} // namespace kestu::test
