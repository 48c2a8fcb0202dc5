#include "common/nearest.hpp"

#include <algorithm>
#include <cctype>

namespace program {
namespace {

char folded(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// The number of characters to insert, remove, replace or exchange with their neighbour to make one
// word of the other (optimal string alignment), with the last three rows of the table.
size_t distance(const std::string &from, const std::string &to) {
    std::vector<size_t> above2(to.size() + 1), above(to.size() + 1), row(to.size() + 1);
    const auto equal = [&](size_t i, size_t j) { return folded(from[i]) == folded(to[j]); };
    for (size_t j = 0; j <= to.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= from.size(); ++i) {
        above2.swap(above);
        above.swap(row);
        row[0] = i;
        for (size_t j = 1; j <= to.size(); ++j) {
            row[j] = std::min(
                {above[j] + 1, row[j - 1] + 1, above[j - 1] + (equal(i - 1, j - 1) ? 0 : 1)});
            if (i > 1 && j > 1 && equal(i - 1, j - 2) && equal(i - 2, j - 1))
                row[j] = std::min(row[j], above2[j - 2] + 1);
        }
    }
    return row[to.size()];
}

} // namespace

// One fault in three characters is a slip; more is another word.
const std::string *nearest(const std::string &word, const std::vector<std::string> &names) {
    size_t least = (word.size() + 1) / 3 + 1;
    const std::string *found = nullptr;
    for (const std::string &name : names) {
        if (name.size() > 2 * word.size() || word.size() > 2 * name.size())
            continue;
        if (const size_t faults = distance(word, name); faults < least) {
            least = faults;
            found = &name;
        }
    }
    return found;
}

} // namespace program
