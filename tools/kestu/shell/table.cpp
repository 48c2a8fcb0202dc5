#include "shell/table.hpp"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace program {
namespace {

// The number of characters to insert, remove, replace or exchange with their neighbour to make one
// word of the other (optimal string alignment), with the last three rows of the table.
size_t distance(std::string_view from, std::string_view to) {
    std::vector<size_t> above2(to.size() + 1), above(to.size() + 1), row(to.size() + 1);
    for (size_t j = 0; j <= to.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= from.size(); ++i) {
        above2.swap(above);
        above.swap(row);
        row[0] = i;
        for (size_t j = 1; j <= to.size(); ++j) {
            row[j] = std::min(
                {above[j] + 1, row[j - 1] + 1, above[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], above2[j - 2] + 1);
        }
    }
    return row[to.size()];
}

struct Search {
    std::string_view name;
    size_t least; // a name has to be nearer than this
    const Command *found = nullptr;
};

void compare(uint64_t length, const uint8_t *key, void *value, void *baton) {
    auto &search = *static_cast<Search *>(baton);
    const std::string_view name(reinterpret_cast<const char *>(key), length);
    if (name.size() > 2 * search.name.size() || search.name.size() > 2 * name.size())
        return;
    const size_t found = distance(search.name, name);
    if (found >= search.least)
        return;
    search.least = found;
    search.found = static_cast<const Command *>(value);
}

} // namespace

CommandTable::CommandTable(std::vector<Command> all) : commands_(std::move(all)) {
    kestu_error_t *err = kestu_triem_create(&trie_);
    for (Command &command : commands_)
        if (!err)
            err = kestu_triem_insert(trie_, command.name.data(), command.name.size(), &command);
    if (!err)
        return;
    kestu_error_clear(err);
    kestu_triem_destroy(&trie_);
    throw std::bad_alloc();
}

const Command *CommandTable::find(const std::string &name) const {
    return static_cast<const Command *>(kestu_trie_search(trie_, name.data(), name.size()));
}

// One fault in three characters is a slip; more is another word.
const Command *CommandTable::nearest(const std::string &name) const {
    Search search{.name = name, .least = (name.size() + 1) / 3 + 1};
    kestu_trie_walk(trie_, compare, &search);
    return search.found;
}

} // namespace program
