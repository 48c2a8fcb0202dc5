// Parents and children. A parent finds its children by its tree and by an index of names that leads
// to the nodes of the tree; a child knows the nodes that carry it, so that none of them outlives
// it.
#include "obj/object.hpp"

#include "kestu_mem.h"
#include "kestu_str.h"

using namespace kestu;

namespace {

Object *child_of(kestu_tree_t *node) {
    return object_of(static_cast<kestu_obj_t *>(kestu_tree_get_data(node)));
}

size_t length_of(const char *name) {
    return static_cast<size_t>(kestu_str_len(name));
}

kestu_tree_t *named_node(kestu_obj_t *parent, const char *name) {
    return static_cast<kestu_tree_t *>(
        kestu_trie_search(parent->child_names, name, length_of(name)));
}

// A node whose name stays taken is kept without its child until the name goes.
void park(Object &parent, kestu_tree_t *node) {
    kestu_tree_extract(node);
    kestu_tree_update(node, 0, nullptr);
    node->next = parent.parked;
    if (parent.parked)
        parent.parked->prev = node;
    parent.parked = node;
}

bool is_parked(const kestu_tree_t *node) {
    return !node->data;
}

void release_parked(Object &parent, kestu_tree_t *node) {
    if (parent.parked == node)
        parent.parked = node->next;
    kestu_treem_node_delete(node);
}

// Takes `node` out of the tree of the parent that it carries a child of.
void take_out(Object &parent, kestu_tree_t *node, bool name_stays) {
    Membership **link = &child_of(node)->memberships;
    while (*link && (*link)->node != node)
        link = &(*link)->next;
    Membership *membership = *link;
    const bool park_it = name_stays && membership && membership->named;
    if (membership)
        *link = membership->next;
    kestu_mem_free(membership);
    if (park_it)
        park(parent, node);
    else
        kestu_treem_node_delete(node);
}

void remove_named(Object &parent, const char *name, kestu_tree_t *node) {
    if (is_parked(node))
        release_parked(parent, node);
    else
        take_out(parent, node, false);
    kestu_triem_delete(parent.child_names, name, length_of(name));
}

void set_parent(Object &child, Object *parent) {
    if (auto *former = object_of(child.parent)) {
        (child.prev_ward ? child.prev_ward->next_ward : former->wards) = child.next_ward;
        if (child.next_ward)
            child.next_ward->prev_ward = child.prev_ward;
    }
    child.parent = parent;
    child.prev_ward = nullptr;
    child.next_ward = parent ? parent->wards : nullptr;
    if (child.next_ward)
        child.next_ward->prev_ward = &child;
    if (parent)
        parent->wards = &child;
}

// Makes the node for a new child, and its entry in the index when the child has a name.
kestu_error_t *make_node(Object &parent, Object &child, Membership &membership) {
    if (kestu_error_t *err = kestu_treem_append_child(
            parent.children, child.type, static_cast<kestu_obj_t *>(&child), &membership.node))
        return err;
    if (!child.name || !parent.child_names)
        return nullptr;
    membership.named = true;
    kestu_error_t *err =
        kestu_triem_insert(parent.child_names, child.name, length_of(child.name), membership.node);
    if (err)
        kestu_treem_node_delete(membership.node);
    return err;
}

kestu_error_t *add_child(Object &parent, Object &child) {
    if (child.name && named_node(&parent, child.name))
        return fail(120102, "There is already a child with name '%s'", child.name);
    Membership *membership = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(sizeof *membership, &membership))
        return err;
    *membership = {&parent, nullptr, false, child.memberships};
    if (kestu_error_t *err = make_node(parent, child, *membership)) {
        kestu_mem_free(membership);
        return err;
    }
    child.memberships = membership;
    set_parent(child, &parent);
    return nullptr;
}

} // namespace

namespace kestu {

// One after the other, looking anew each time: what is called on the way may take children away.
void destroy_children(Object &parent) {
    kestu_triem_destroy(&parent.child_names);
    while (parent.parked)
        release_parked(parent, parent.parked);
    while (kestu_tree_t *node = kestu_tree_get_first(kestu_tree_get_child(parent.children))) {
        Object *child = child_of(node);
        take_out(parent, node, false);
        set_parent(*child, nullptr);
        kestu_obj_destroy(child);
    }
    kestu_treem_destroy(&parent.children);
}

void leave_family(Object &object) {
    if (object.parent && object.name)
        if (kestu_tree_t *node = named_node(object.parent, object.name))
            if (is_parked(node) || child_of(node) == &object)
                remove_named(*object_of(object.parent), object.name, node);
    while (object.memberships)
        take_out(*object.memberships->parent, object.memberships->node, true);
    set_parent(object, nullptr);
    while (object.wards)
        set_parent(*object.wards, nullptr);
}

} // namespace kestu

kestu_error_t *kestu_obj_addc(kestu_obj_t *parent, kestu_obj_t *child) {
    return wrap(add_child(*object_of(parent), *object_of(child)), "Cannot add child to object");
}

kestu_obj_t *kestu_obj_getc(kestu_obj_t *parent, const char *name) {
    return child_of(named_node(parent, name));
}

kestu_obj_t *kestu_obj_removec(kestu_obj_t *parent, const char *name, kestu_obj_t *obj) {
    kestu_tree_t *node = nullptr;
    if (name) {
        node = named_node(parent, name);
        if (!node)
            return nullptr;
        kestu_obj_t *child = child_of(node);
        remove_named(*object_of(parent), name, node);
        return child;
    }
    node = kestu_tree_search_obj(kestu_tree_get_child(parent->children), obj);
    if (obj && node)
        take_out(*object_of(parent), node, true);
    return obj;
}

// The name of what is removed stays in the index: users count on a name being given once.
kestu_obj_t *kestu_obj_removec_func(kestu_obj_t *parent, kestu_int_func predicate, void *baton) {
    kestu_tree_t *node =
        kestu_tree_search_func(kestu_tree_get_child(parent->children), predicate, baton);
    if (!node)
        return nullptr;
    kestu_obj_t *child = child_of(node);
    take_out(*object_of(parent), node, true);
    return child;
}

kestu_error_t *kestu_obj_child_walk_err_first(kestu_obj_t *obj, kestu_err_func pre,
                                              kestu_err_func post, void *baton) {
    return wrap(kestu_tree_walk_err_first(obj->children, pre, post, baton),
                "Cannot walk objects childs");
}
