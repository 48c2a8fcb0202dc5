// What changes a map. Memory is taken before anything is changed.
#include "containers/map_tree.hpp"

#include "mem/memory.hpp"

namespace kestu::map {
namespace {

// Up to the largest of these, in granules, each size has a class of its own; behind it each power
// of two and each number in the middle between two.
constexpr size_t exact_classes = 16;

struct LeafClass {
    size_t number;
    size_t bytes;
};

LeafClass class_of(size_t length) {
    const size_t granules = (sizeof(Leaf) + length + 7) / 8;
    if (granules <= exact_classes)
        return {granules, 8 * granules};
    const auto width = static_cast<size_t>(std::bit_width(granules - 1));
    const size_t half = size_t{1} << (width - 1);
    const bool fits_between = granules <= half + half / 2;
    const size_t number = exact_classes + 1 + 2 * (width - 5) + !fits_between;
    return {number, 8 * (fits_between ? half + half / 2 : 2 * half)};
}

constexpr size_t longest_key = size_t{1} << 48;

kestu_error_t *make_leaf(Map &map, Key key, void *value, Leaf **made) {
    if (key.length > longest_key)
        return no_memory(key.length);
    const LeafClass size = class_of(key.length);
    void *memory = map.leaves.take(size.number, size.bytes);
    if (!memory)
        return no_memory(size.bytes);
    *made = new (memory) Leaf{value, key.length};
    if (key.length > 0)
        std::memcpy((*made)->key(), key.bytes, key.length);
    return nullptr;
}

void free_leaf(Map &map, Leaf &leaf) {
    map.leaves.give_back(class_of(leaf.length).number, &leaf);
}

Node *make_node(Map &map, size_t shape, Node *parent, size_t depth) {
    auto *node = static_cast<Node *>(map.nodes.take(shape, shapes[shape].bytes));
    if (node)
        begin_node(*node, shapes[shape], parent, depth);
    return node;
}

void free_node(Map &map, Node &node) {
    map.nodes.give_back(shape_of(node), &node);
}

Child &link_to(Map &map, Node *parent, Key key) {
    return parent ? link_at(*parent, slot_of(key, parent->depth)) : map.root;
}

// Gives a node on the way of `key` another shape. False, with nothing changed, without memory.
bool reshape(Map &map, Node *&node, size_t shape, Key key) {
    Node *made = make_node(map, shape, node->parent, node->depth);
    if (!made)
        return false;
    move_children(*made, *node);
    link_to(map, node->parent, key) = *made;
    free_node(map, *node);
    node = made;
    return true;
}

// Makes room for one more child of the node on the way of `key`.
kestu_error_t *widen(Map &map, Node *&node, Key key) {
    const size_t shape = shape_of(*node);
    if (node->count < shapes[shape].capacity || reshape(map, node, shape + 1, key))
        return nullptr;
    return no_memory(shapes[shape + 1].bytes);
}

// A node with one child gives its place to it; one with much room moves into a smaller one, unless
// there is no memory for that.
void narrow(Map &map, Node &node, Key key) {
    if (node.count == 1) {
        const Child only = at_place(node, place_from(node, 0));
        if (only.is_node())
            only.node().parent = node.parent;
        link_to(map, node.parent, key) = only;
        free_node(map, node);
        return;
    }
    const size_t shape = shape_of(node);
    Node *at = &node;
    if (shape > 0 && node.count <= shapes[shape - 1].capacity * 3 / 4)
        reshape(map, at, shape - 1, key);
}

// Finds or makes the node in which the new leaf is to hang.
kestu_error_t *branch(Map &map, const Fork &fork, Key key, Node **branching) {
    *branching = fork.node;
    if (!fork.below)
        return widen(map, *branching, key);
    Node *made = make_node(map, 0, fork.node, fork.depth);
    if (!made)
        return no_memory(shapes[0].bytes);
    link_to(map, fork.node, key) = *made;
    add_child(*made, slot_of(Key(*fork.leaf), fork.depth), fork.below);
    *branching = made;
    return nullptr;
}

} // namespace

Fork fork_at(Node *parent, Leaf &leaf, Key key) {
    Fork fork = {&leaf, key.common(leaf), parent, leaf, false};
    fork.is_there = fork.depth == key.length && fork.depth == leaf.length;
    for (; fork.node && fork.node->depth > fork.depth; fork.node = fork.node->parent)
        fork.below = *fork.node;
    if (fork.node && fork.node->depth == fork.depth)
        fork.below = {};
    return fork;
}

Fork fork_of(const Map &map, Key key) {
    const Way way = way_of(map, key);
    if (way.leaf)
        return fork_at(way.parent, *way.leaf, key);
    if (!way.parent)
        return {};
    Child any = *way.parent;
    while (any.is_node())
        any = any.node().kind == Kind::direct ? at_place(any.node(), place_from(any.node(), 0))
                                              : any.node().children()[0];
    return fork_at(way.parent, any.leaf(), key);
}

kestu_error_t *add_leaf(Map &map, const Fork &fork, Key key, void *value, Node **parent,
                        Leaf **added) {
    Leaf *leaf = nullptr;
    if (kestu_error_t *err = make_leaf(map, key, value, &leaf))
        return err;
    *parent = nullptr;
    if (!fork.leaf)
        map.root = *leaf;
    else if (kestu_error_t *err = branch(map, fork, key, parent)) {
        free_leaf(map, *leaf);
        return err;
    } else
        add_child(**parent, slot_of(key, fork.depth), *leaf);
    ++map.count;
    ++map.changes;
    *added = leaf;
    return nullptr;
}

void remove_leaf(Map &map, Node *parent, Leaf &leaf) {
    --map.count;
    ++map.changes;
    if (parent) {
        remove_child(*parent, slot_of(Key(leaf), parent->depth));
        narrow(map, *parent, Key(leaf));
    } else {
        map.root = {};
    }
    free_leaf(map, leaf);
}

} // namespace kestu::map
