// Callbacks that note the tags which they see, for the tests of lists, stacks and trees.
#pragma once

#include "kestu_walk.h"

#include <utility>
#include <vector>

namespace kestu::test {

using Tags = std::vector<int>;

// The tags in the order of the calls. At the tag `stop_at` the callbacks return the tag, the datum
// or `err`, by their kind, and otherwise 0 or null.
struct Trace {
    int stop_at = 0;
    kestu_error_t *err = KestuDLlistStopWalking;
    Tags seen = {};

    bool ends(uint32_t tag) {
        seen.push_back(static_cast<int>(tag));
        return seen.back() == stop_at;
    }
};

inline int see_int(uint32_t tag, void *, void *trace) {
    return static_cast<Trace *>(trace)->ends(tag) ? static_cast<int>(tag) : 0;
}

inline void see(uint32_t tag, void *data, void *trace) {
    see_int(tag, data, trace);
}

inline void *see_ptr(uint32_t tag, void *data, void *trace) {
    return see_int(tag, data, trace) ? data : nullptr;
}

inline kestu_error_t *see_err(uint32_t tag, void *data, void *trace) {
    return see_int(tag, data, trace) ? static_cast<Trace *>(trace)->err : nullptr;
}

// Sets the result to the datum where there is no error to return.
inline kestu_error_t *see_err_or_ptr(uint32_t tag, void *data, void *trace, void **result) {
    const bool ends = see_int(tag, data, trace) != 0;
    kestu_error_t *err = ends ? static_cast<Trace *>(trace)->err : nullptr;
    if (ends && !err)
        *result = data;
    return err;
}

// All that a walk of `node` shows.
template <typename Walk, typename Node>
Tags seen_by(Walk walk, Node *node) {
    Trace trace;
    walk(node, see, &trace);
    return trace.seen;
}

// What a walk of `node` returns that `fn` ends at a tag, and what it shows until then.
template <typename Walk, typename Node, typename Func>
auto ended(Walk walk, Node *node, Func fn, int stop_at) {
    Trace trace{stop_at};
    const auto result = walk(node, fn, &trace);
    return std::pair(result, trace.seen);
}

} // namespace kestu::test
