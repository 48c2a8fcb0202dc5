// Text as people see it: grapheme clusters and their widths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kestu::edit {

struct Cluster {
    enum Kind : uint8_t {
        shown,   // as it stands
        row_end, // a line feed
        tab,
        in_words, // by its code, as words() writes it
    };
    size_t length; // bytes, at least 1
    uint32_t width;
    Kind kind;
};

// The cluster that begins at byte `at`, which lies before the end.
Cluster cluster_at(std::string_view text, size_t at);

// The beginning of the cluster that holds the byte before `at`; 0 for 0.
size_t cluster_before(std::string_view text, size_t at);

// The first boundary between clusters that is not before `at`.
size_t boundary_from(std::string_view text, size_t at);

// What stands for a cluster that cannot be shown: "^A", "\xff", "<200b>". Returns its length.
size_t words(std::string_view cluster, char (&out)[16]);

// Whether a cluster belongs to a word: letters, digits and what is like them.
bool is_word(std::string_view text, size_t at);

} // namespace kestu::edit
