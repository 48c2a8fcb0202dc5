// A check of all links of a list, and a list beside its model, for the tests of the doubly linked
// families.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
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

// A list, the tags that it should hold, and a handle that random steps move to any node.
template <typename Node>
class ListModel : public testing::Test {
  protected:
    ListModel() { tags.reserve(3000); }

    size_t below(size_t n) { return random() % n; }
    auto at(size_t k) { return tags.begin() + static_cast<ptrdiff_t>(k); }
    static void *datum_of(uint32_t tag) {
        static char objects[7];
        return &objects[tag % 7];
    }

    void move_handle() {
        place = tags.empty() ? 0 : below(tags.size());
        handle = tags.empty() ? nullptr : checked_nodes(handle)[place];
    }

    // A node with the next tag, that stands at `where` then. The handle stays, if there is one.
    template <typename Add>
    void expect_added(size_t where, Add add) {
        Node *const held = handle;
        Node *const added = add(++last);
        ASSERT_EQ(handle, held ? held : added);
        ASSERT_EQ(added->data, datum_of(last));
        tags.insert(at(where), last);
    }

    std::mt19937 random{20240607};
    std::vector<uint32_t> tags;
    uint32_t last = 0;
    Node *handle = nullptr;
    size_t place = 0; // of the handle
};

} // namespace kestu::test
