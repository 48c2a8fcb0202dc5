// The tree. One walk without recursion serves walks, count, searches and deletions.
#include "kestu_tree.h"

#include "containers/links.hpp"
#include "containers/nodes.hpp"
#include "containers/walks.hpp"

#include <type_traits>

using namespace kestu;

namespace {

using Node = kestu_tree_t;

// Siblings have the same parent, so a node takes it from the one that it is linked to.
void link_sibling_before(Node *next, Node *node) {
    node->parent = next->parent;
    link_before(next, node);
}

void link_sibling_after(Node *prev, Node *node) {
    node->parent = prev->parent;
    link_after(prev, node);
}

void link_sibling_first(Node *any, Node *node) {
    link_sibling_before(first_of(any), node);
}

void link_sibling_last(Node *any, Node *node) {
    link_sibling_after(last_of(any), node);
}

constexpr Place<Node> before_handle{link_sibling_before, "Unable to add Tree node."};
constexpr Place<Node> after_handle{link_sibling_after, "Unable to add Tree node."};
constexpr Place<Node> at_front{link_sibling_first, "Unable to prepend Tree node."};
constexpr Place<Node> at_end{link_sibling_last, "Unable to append Tree node."};
constexpr Place<Node> first_child{link_sibling_first, "Unable to prepend child Tree node."};
constexpr Place<Node> last_child{link_sibling_last, "Unable to append child Tree node."};

// Nodes from the system's allocator, whose failures say what they were for.
struct TreemNodes : HeapNodes {
    static kestu_error_t *make(Node **node) {
        kestu_error_t *err = HeapNodes::make(node);
        return err ? wrap(err, "Can't allocate memory for treem node.") : nullptr;
    }
};

Node lone(uint32_t tag, void *data, Node *parent = nullptr) {
    return {tag, nullptr, nullptr, parent, nullptr, data};
}

// The parent's `child` stays with the child that came first: callers rely on handles that do not
// move, so it is the way into the level of children and not their first.
template <typename Nodes>
kestu_error_t *add_child(const Place<Node> &place, const Nodes &nodes, Node *parent, uint32_t tag,
                         void *data, Node **out) {
    if (!parent)
        return fail(120120);
    return add_node(place, nodes, lone(tag, data, parent), &parent->child, out);
}

// A node that stands in the wanted place already, or beside itself, stays.
kestu_error_t *insert(void (*link)(Node *, Node *), Node *ref, Node *Node::*there, Node *node) {
    if (!ref || !node)
        return fail(120120);
    if (node != ref && node != ref->*there)
        link(ref, node);
    return nullptr;
}

Node *extract(Node *node) {
    if (node->parent && node->parent->child == node)
        node->parent->child = node->prev ? node->prev : node->next;
    if (node->prev)
        node->prev->next = node->next;
    if (node->next)
        node->next->prev = node->prev;
    node->prev = node->next = node->parent = nullptr;
    return node;
}

// Nodes made in a row mostly lie in a row, upwards on the heap and within a block of a pool, while
// the system maps a pool's blocks one below the other. What lies a little further on either way is
// asked for early. These are guesses: a prefetch of any address is harmless.
void prefetch_beyond(const Node *node) {
    constexpr uintptr_t ahead = 2048;
    constexpr uintptr_t pool_block = 8192;
    const auto here = reinterpret_cast<uintptr_t>(node);
    __builtin_prefetch(reinterpret_cast<const void *>(here + ahead));
    __builtin_prefetch(reinterpret_cast<const void *>(here - pool_block - ahead));
}

// Walks the level of `any` and all below it, until a visitor returns false: `enter` meets a node
// before its children, `leave` after them and may take the node away. Parents lead back up, so that
// no depth needs a stack.
template <typename Enter, typename Leave>
void walk(Node *any, Enter enter, Leave leave) {
    if (!any)
        return;
    Node *const above = any->parent;
    Node *node = first_of(any);
    while (enter(node)) {
        prefetch_beyond(node);
        if (node->child) {
            node = first_of(node->child);
            continue;
        }
        for (;;) {
            Node *const next = node->next;
            Node *const parent = node->parent;
            if (!leave(node))
                return;
            if (next) {
                node = next;
                break;
            }
            if (parent == above)
                return;
            node = parent;
        }
    }
}

constexpr auto go_on = [](Node *) { return true; };

// The nodes of a walk, parents before children.
auto parents_first(Node *any) {
    return [any](auto visit) { walk(any, visit, go_on); };
}

// What a callback returns, if there is a callback and it returns something, and otherwise what does
// not end a walk.
template <typename Result>
auto call(Result (*fn)(uint32_t, void *, void *), const Node *node, void *baton) {
    if constexpr (std::is_void_v<Result>) {
        if (fn)
            fn(node->tag, node->data, baton);
        return false;
    } else {
        return fn ? fn(node->tag, node->data, baton) : Result{};
    }
}

template <typename Func>
auto walk_calling(Node *any, Func pre, Func post, void *baton) {
    decltype(call(pre, any, baton)) result{};
    const auto calling = [&result, baton](Func fn) {
        return [&result, fn, baton](const Node *node) {
            result = call(fn, node, baton);
            return !result;
        };
    };
    // A walk for one callback only does not ask at each node whether there is another.
    if (!post)
        walk(any, calling(pre), go_on);
    else if (!pre)
        walk(any, go_on, calling(post));
    else
        walk(any, calling(pre), calling(post));
    return result;
}

constexpr kestu_visit_func nobody = nullptr;

template <typename Nodes, typename Func>
auto remove(Node *node, Func fn, void *baton) {
    extract(node);
    const auto result = call(fn, node, baton);
    Nodes::release(node);
    return result;
}

// Nobody sees these nodes on their way out, so that of all links only the one from above is undone.
void release_level(Node *any) {
    if (!any)
        return;
    Node *const above = any->parent;
    walk(any, go_on, [](Node *node) {
        TreemNodes::release(node);
        return true;
    });
    if (above)
        above->child = nullptr;
}

template <typename Nodes, typename Func>
auto remove_level(Node *any, Func fn, void *baton) {
    decltype(call(fn, any, baton)) result{};
    if (std::is_same_v<Nodes, TreemNodes> && !fn) {
        release_level(any);
        return result;
    }
    walk(any, go_on, [&](Node *node) {
        result = remove<Nodes>(node, fn, baton);
        return !result;
    });
    return result;
}

template <typename Nodes, typename Func>
auto remove_subtree(Node *node, Func fn, void *baton) {
    decltype(call(fn, node, baton)) result{};
    if (node)
        result = remove_level<Nodes>(node->child, fn, baton);
    if (node && !result)
        result = remove<Nodes>(node, fn, baton);
    return result;
}

} // namespace

// Callers rely on null whatever happens: a pool without memory shows as a null node.
kestu_error_t *kestu_tree_create(uint32_t tag, void *data, kestu_tree_t **out, apr_pool_t *pool) {
    *out = pool_node<Node>(pool);
    if (*out)
        **out = lone(tag, data);
    return nullptr;
}

kestu_error_t *kestu_treem_create(uint32_t tag, void *data, kestu_tree_t **out) {
    if (kestu_error_t *err = TreemNodes::make(out))
        return err;
    **out = lone(tag, data);
    return nullptr;
}

kestu_tree_t *kestu_tree_get_prev(kestu_tree_t *node) {
    return node ? node->prev : nullptr;
}

kestu_tree_t *kestu_tree_get_next(kestu_tree_t *node) {
    return node ? node->next : nullptr;
}

kestu_tree_t *kestu_tree_get_parent(kestu_tree_t *node) {
    return node ? node->parent : nullptr;
}

kestu_tree_t *kestu_tree_get_child(kestu_tree_t *node) {
    return node ? node->child : nullptr;
}

kestu_tree_t *kestu_tree_get_first(kestu_tree_t *node) {
    return first_of(node);
}

kestu_tree_t *kestu_tree_get_last(kestu_tree_t *node) {
    return last_of(node);
}

kestu_tree_t *kestu_tree_get_top(kestu_tree_t *node) {
    while (node && node->parent)
        node = node->parent;
    return node;
}

void *kestu_tree_get_data(kestu_tree_t *node) {
    return node ? node->data : nullptr;
}

void *kestu_tree_get_data_tag(kestu_tree_t *node, uint32_t *tag) {
    if (node && tag)
        *tag = node->tag;
    return kestu_tree_get_data(node);
}

void kestu_tree_update(kestu_tree_t *node, uint32_t tag, void *data) {
    node->tag = tag;
    node->data = data;
}

kestu_error_t *kestu_tree_insert_before(kestu_tree_t *ref, kestu_tree_t *node) {
    return insert(link_sibling_before, ref, &Node::prev, node);
}

kestu_error_t *kestu_tree_insert_after(kestu_tree_t *ref, kestu_tree_t *node) {
    return insert(link_sibling_after, ref, &Node::next, node);
}

kestu_tree_t *kestu_tree_extract(kestu_tree_t *node) {
    return node ? extract(node) : nullptr;
}

kestu_error_t *kestu_tree_prepend(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out,
                                  apr_pool_t *pool) {
    return add_node(at_front, PoolNodes{pool}, lone(tag, data), root, out);
}

kestu_error_t *kestu_tree_append(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out,
                                 apr_pool_t *pool) {
    return add_node(at_end, PoolNodes{pool}, lone(tag, data), root, out);
}

kestu_error_t *kestu_treem_append(kestu_tree_t **root, uint32_t tag, void *data,
                                  kestu_tree_t **out) {
    return add_node(at_end, TreemNodes{}, lone(tag, data), root, out);
}

kestu_error_t *kestu_tree_add_before(kestu_tree_t **pos, uint32_t tag, void *data,
                                     kestu_tree_t **out, apr_pool_t *pool) {
    return add_node(before_handle, PoolNodes{pool}, lone(tag, data), pos, out);
}

kestu_error_t *kestu_tree_add_after(kestu_tree_t **pos, uint32_t tag, void *data,
                                    kestu_tree_t **out, apr_pool_t *pool) {
    return add_node(after_handle, PoolNodes{pool}, lone(tag, data), pos, out);
}

kestu_error_t *kestu_tree_prepend_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                        kestu_tree_t **out, apr_pool_t *pool) {
    return add_child(first_child, PoolNodes{pool}, parent, tag, data, out);
}

kestu_error_t *kestu_tree_append_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                       kestu_tree_t **out, apr_pool_t *pool) {
    return add_child(last_child, PoolNodes{pool}, parent, tag, data, out);
}

kestu_error_t *kestu_treem_append_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                        kestu_tree_t **out) {
    return add_child(last_child, TreemNodes{}, parent, tag, data, out);
}

void kestu_tree_walk(kestu_tree_t *node, kestu_visit_func pre, kestu_visit_func post, void *baton) {
    walk_calling(node, pre, post, baton);
}

int kestu_tree_walk_int_first(kestu_tree_t *node, kestu_int_func pre, kestu_int_func post,
                              void *baton) {
    return walk_calling(node, pre, post, baton);
}

kestu_error_t *kestu_tree_walk_err_first(kestu_tree_t *node, kestu_err_func pre,
                                         kestu_err_func post, void *baton) {
    return walk_calling(node, pre, post, baton);
}

uint64_t kestu_tree_count(kestu_tree_t *node) {
    uint64_t count = 0;
    parents_first(node)([&count](Node *) { return ++count; });
    return count;
}

kestu_tree_t *kestu_tree_search_obj(kestu_tree_t *node, void *data) {
    return find_node<Node>(parents_first(node), [data](Node *n) { return n->data == data; });
}

kestu_tree_t *kestu_tree_search_func(kestu_tree_t *node, kestu_int_func fn, void *baton) {
    return find_node<Node>(parents_first(node),
                           [fn, baton](Node *n) { return fn(n->tag, n->data, baton) != 0; });
}

void kestu_tree_node_delete(kestu_tree_t *node) {
    remove_subtree<PoolNodes>(node, nobody, nullptr);
}

void kestu_tree_delete(kestu_tree_t *node) {
    remove_level<PoolNodes>(node, nobody, nullptr);
}

void kestu_treem_node_delete(kestu_tree_t *node) {
    remove_subtree<TreemNodes>(node, nobody, nullptr);
}

void kestu_treem_delete(kestu_tree_t *node) {
    remove_level<TreemNodes>(node, nobody, nullptr);
}

void kestu_tree_node_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_subtree<PoolNodes>(node, fn, baton);
}

void kestu_tree_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_level<PoolNodes>(node, fn, baton);
}

void kestu_treem_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_level<TreemNodes>(node, fn, baton);
}

kestu_error_t *kestu_tree_node_delete_errfunc(kestu_tree_t *node, kestu_err_func fn, void *baton) {
    return remove_subtree<PoolNodes>(node, fn, baton);
}

kestu_error_t *kestu_tree_delete_errfunc(kestu_tree_t *node, kestu_err_func fn, void *baton) {
    return remove_level<PoolNodes>(node, fn, baton);
}

void kestu_tree_delete_obj_func(kestu_tree_t *node, void *data, kestu_visit_func fn, void *baton) {
    kestu_tree_node_delete_func(kestu_tree_search_obj(node, data), fn, baton);
}

kestu_error_t *kestu_tree_delete_obj_errfunc(kestu_tree_t *node, void *data, kestu_err_func fn,
                                             void *baton) {
    return kestu_tree_node_delete_errfunc(kestu_tree_search_obj(node, data), fn, baton);
}

void kestu_tree_destroy(kestu_tree_t **root) {
    *root = nullptr;
}

void kestu_treem_destroy(kestu_tree_t **root) {
    kestu_treem_destroy_func(root, nobody, nullptr);
}

void kestu_treem_destroy_func(kestu_tree_t **root, kestu_visit_func fn, void *baton) {
    kestu_treem_delete_func(*root, fn, baton);
    *root = nullptr;
}
