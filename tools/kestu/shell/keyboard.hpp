// The keyboard of the shell, between the terminal and the line editor.
#pragma once

#include "shell/keys.hpp"

#include <atomic>
#include <thread>

namespace program {

// While it lives, standard input gives the keys that are typed on a terminal, one for each read.
// The editor takes what one read gives for one key: from the terminal itself a paste, a character
// of several bytes and what is typed while a command runs would come as a key that does not exist.
// A line's last key is the last that is read, so that what follows stays in the terminal for the
// command.
class Keyboard {
  public:
    // Throws std::system_error when the system has no more files or threads.
    explicit Keyboard(int terminal);
    ~Keyboard();
    Keyboard(const Keyboard &) = delete;
    Keyboard &operator=(const Keyboard &) = delete;

    // Whether the terminal has come to its end. The editor then finds an unreadable key.
    bool at_end() const { return ended_; }

    // Where a key can be handed to the editor from outside, with a write of its bytes.
    int entrance() const { return sender_; }

  private:
    void follow();
    bool wait_for(int file, short event) const;
    bool take_key();
    bool hand_over(std::string_view key) const;

    int terminal_;
    int sender_ = -1;
    int stopper_ = -1;
    KeyDecoder decoder_;
    std::atomic<bool> ended_ = false;
    std::thread follower_;
};

} // namespace program
