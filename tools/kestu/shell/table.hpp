// The commands of the shell by name.
#pragma once

#include "completion/model.hpp"

#include "kestu_trie.h"

#include <string>
#include <vector>

namespace program {

class CommandTable {
  public:
    // The table of those below `root`.
    explicit CommandTable(CompletedCommand root);
    ~CommandTable() { kestu_triem_destroy(&trie_); }
    CommandTable(const CommandTable &) = delete;
    CommandTable &operator=(const CommandTable &) = delete;

    const CompletedCommand &root() const { return root_; }
    const std::vector<CompletedCommand> &all() const { return root_.commands; }

    // The command with this name, or null.
    const CompletedCommand *find(const std::string &name) const;

    // The command whose name is most like `name`, or null when none is like it.
    const CompletedCommand *nearest(const std::string &name) const;

  private:
    CompletedCommand root_;
    kestu_trie_t *trie_ = nullptr; // to its commands
};

} // namespace program
