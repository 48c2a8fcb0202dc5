// The commands of the shell by name.
#pragma once

#include "program.hpp"

#include "kestu_trie.h"

#include <string>
#include <vector>

namespace program {

class CommandTable {
  public:
    explicit CommandTable(std::vector<Command> commands);
    ~CommandTable() { kestu_triem_destroy(&trie_); }
    CommandTable(const CommandTable &) = delete;
    CommandTable &operator=(const CommandTable &) = delete;

    const std::vector<Command> &all() const { return commands_; }

    // The command with this name, or null.
    const Command *find(const std::string &name) const;

    // The command whose name is most like `name`, or null when none is like it.
    const Command *nearest(const std::string &name) const;

  private:
    std::vector<Command> commands_;
    kestu_trie_t *trie_ = nullptr; // to the entries of `commands`
};

} // namespace program
