#include "shell/table.hpp"

#include "common/nearest.hpp"

#include <new>
#include <utility>

namespace program {

CommandTable::CommandTable(CompletedCommand root) : root_(std::move(root)) {
    kestu_error_t *err = kestu_triem_create(&trie_);
    for (CompletedCommand &command : root_.commands)
        if (!err)
            err = kestu_triem_insert(trie_, command.name.data(), command.name.size(), &command);
    if (!err)
        return;
    kestu_error_clear(err);
    kestu_triem_destroy(&trie_);
    throw std::bad_alloc();
}

const CompletedCommand *CommandTable::find(const std::string &name) const {
    return static_cast<const CompletedCommand *>(
        kestu_trie_search(trie_, name.data(), name.size()));
}

const CompletedCommand *CommandTable::nearest(const std::string &name) const {
    std::vector<std::string> names;
    for (const CompletedCommand &command : all())
        names.push_back(command.name);
    const std::string *found = program::nearest(name, names);
    return found ? find(*found) : nullptr;
}

} // namespace program
