// A check of all links of a list, for the tests of the doubly linked families.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace kestu::test {

// The nodes of the list of `any`, first to last. A test fails when a link of one node contradicts
// that of its neighbour, or when the list does not end.
template <typename Node>
std::vector<Node *> checked_nodes(Node *any) {
    constexpr size_t too_many = 100000;
    std::vector<Node *> nodes;
    for (size_t steps = 0; any && any->prev; any = any->prev)
        if (++steps == too_many || any->prev->next != any) {
            ADD_FAILURE() << "the way to the first node is broken";
            return nodes;
        }
    for (Node *node = any; node; node = node->next) {
        nodes.push_back(node);
        if (nodes.size() == too_many || (node->next && node->next->prev != node)) {
            ADD_FAILURE() << "the way to the last node is broken";
            break;
        }
    }
    return nodes;
}

template <typename Node>
std::vector<uint32_t> checked_tags(Node *any) {
    std::vector<uint32_t> tags;
    for (const Node *node : checked_nodes(any))
        tags.push_back(node->tag);
    return tags;
}

} // namespace kestu::test
