// The tree beside a plain one.
#pragma once

#include "fuzz/list_model.hpp"
#include "kestu_tree.h"

#include <iterator>
#include <memory>

namespace kestu::fuzz {

// The functions that exist for both kinds of nodes, so that one test serves both.
struct PoolTree {
    static constexpr auto remove_subtree = kestu_tree_node_delete;
    static constexpr auto remove_level = kestu_tree_delete;
    ScratchPool pool;

    auto create(uint32_t tag, kestu_tree_t **out) {
        return kestu_tree_create(tag, nullptr, out, pool);
    }
    auto append(kestu_tree_t **root, uint32_t tag, kestu_tree_t **out) {
        return kestu_tree_append(root, tag, nullptr, out, pool);
    }
    auto append_child(kestu_tree_t *parent, uint32_t tag, kestu_tree_t **out) {
        return kestu_tree_append_child(parent, tag, nullptr, out, pool);
    }
};

struct HeapTree {
    static constexpr auto remove_subtree = kestu_treem_node_delete;
    static constexpr auto remove_level = kestu_treem_delete;

    auto create(uint32_t tag, kestu_tree_t **out) { return kestu_treem_create(tag, nullptr, out); }
    auto append(kestu_tree_t **root, uint32_t tag, kestu_tree_t **out) {
        return kestu_treem_append(root, tag, nullptr, out);
    }
    auto append_child(kestu_tree_t *parent, uint32_t tag, kestu_tree_t **out) {
        return kestu_treem_append_child(parent, tag, nullptr, out);
    }
};

// What a tree should be: as simple as can be, and written with other means. `entry` is the handle's
// node, or the parent's `child`.
struct TreeNode {
    kestu_tree_t *node = nullptr;
    TreeNode *parent = nullptr, *entry = nullptr;
    std::vector<std::unique_ptr<TreeNode>> children = {};

    auto place() {
        return std::find_if(parent->children.begin(), parent->children.end(),
                            [this](const auto &child) { return child.get() == this; });
    }
    void adopt(decltype(children)::iterator at, std::unique_ptr<TreeNode> child) {
        child->parent = this;
        entry = entry ? entry : child.get();
        children.insert(at, std::move(child));
    }
    std::unique_ptr<TreeNode> leave() {
        const auto at = place();
        auto self = std::move(*at);
        const auto next = parent->children.erase(at);
        const bool was_first = next == parent->children.begin();
        if (parent->entry == this)
            parent->entry =
                parent->children.empty() ? nullptr : (was_first ? next : next - 1)->get();
        return self;
    }
    std::vector<TreeNode *> all_below() const {
        std::vector<TreeNode *> found;
        for (const auto &child : children) {
            found.push_back(child.get());
            for (TreeNode *below : child->all_below())
                found.push_back(below);
        }
        return found;
    }
};

inline bool is_as(const TreeNode &model, kestu_tree_t *entry) {
    const auto nodes = checked_nodes(entry);
    if (entry != (model.entry ? model.entry->node : nullptr) ||
        nodes.size() != model.children.size())
        return false;
    for (size_t i = 0; i < nodes.size(); ++i)
        if (nodes[i] != model.children[i]->node || nodes[i]->parent != model.node ||
            !is_as(*model.children[i], nodes[i]->child))
            return false;
    return true;
}

// A tree beside its model. The steps take `any` node of it.
template <typename Functions>
class TreeModel {
  public:
    explicit TreeModel(Input &input) : in(input) {}
    ~TreeModel() { f.remove_level(root); }
    TreeModel(const TreeModel &) = delete;
    TreeModel &operator=(const TreeModel &) = delete;

    void run() {
        for (; !in.empty(); ++tag)
            step();
    }

  private:
    void append() {
        require(succeeded(f.append(&root, tag, &made)));
        adopt(model, model.children.end());
    }
    void append_child() {
        require(succeeded(f.append_child(any->node, tag, &made)));
        adopt(*any, any->children.end());
    }
    void insert() {
        const bool after = below(2);
        require(succeeded(f.create(tag, &made)));
        require(succeeded(
            (after ? kestu_tree_insert_after : kestu_tree_insert_before)(any->node, made)));
        adopt(*any->parent, any->place() + after);
    }
    // Out of its place, and with its sub-tree beside another.
    void move() {
        auto moved = any->leave();
        require(kestu_tree_extract(any->node) == any->node);
        const auto rest = model.all_below();
        if (rest.empty())
            return f.remove_subtree(moved->node);
        TreeNode *const beside = rest[below(rest.size())];
        const bool after = below(2);
        require(succeeded(
            (after ? kestu_tree_insert_after : kestu_tree_insert_before)(beside->node, any->node)));
        beside->parent->adopt(beside->place() + after, std::move(moved));
    }
    void remove_subtree() {
        f.remove_subtree(any->node);
        any->leave();
    }
    void remove_level() {
        TreeNode *const parent = any->parent;
        if (!parent->node || below(3) > 0)
            return;
        f.remove_level(any->node);
        parent->children.clear();
        parent->entry = nullptr;
    }

    void step() {
        constexpr void (TreeModel::*steps[])() = {
            &TreeModel::append,         &TreeModel::append,       &TreeModel::append_child,
            &TreeModel::append_child,   &TreeModel::append_child, &TreeModel::append_child,
            &TreeModel::insert,         &TreeModel::insert,       &TreeModel::move,
            &TreeModel::remove_subtree, &TreeModel::remove_level,
        };
        const auto all = model.all_below();
        any = all.empty() ? nullptr : all[below(all.size())];
        made = nullptr;
        (this->*steps[any ? below(std::size(steps)) : 0])();
        if (!made)
            root = model.entry ? model.entry->node : nullptr;
        require(is_as(model, root));
        require(kestu_tree_count(root) == model.all_below().size());
    }

    void adopt(TreeNode &parent, decltype(TreeNode::children)::iterator at) {
        parent.adopt(at, std::make_unique<TreeNode>(TreeNode{made}));
    }

    size_t below(size_t n) { return n > 256 ? in.take<uint16_t>() % n : in.byte() % n; }

    Input &in;
    Functions f;
    TreeNode model;
    TreeNode *any = nullptr;
    kestu_tree_t *root = nullptr, *made = nullptr;
    uint32_t tag = 0;
};

} // namespace kestu::fuzz
