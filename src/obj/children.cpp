// Parents and children. A parent finds its children by its tree and by an index of names that leads
// to the nodes of the tree; a child knows the nodes that carry it, so that none of them outlives
// it.
#include "obj/children.hpp"

#include "error/error.hpp"
#include "kestu_mem.h"
#include "kestu_str.h"

using namespace kestu;

namespace {

Membership *membership_of(kestu_tree_t *node) {
    return static_cast<Membership *>(node);
}

// Null for a node that is parked.
Object *child_of(const Membership &membership) {
    return object_of(static_cast<kestu_obj_t *>(membership.data));
}

size_t length_of(const char *name) {
    return static_cast<size_t>(kestu_str_len(name));
}

Membership *find_named(const kestu_obj_t *parent, const char *name) {
    if (!name)
        return nullptr;
    return static_cast<Membership *>(kestu_trie_search(parent->child_names, name, length_of(name)));
}

void forget_name(Object &parent, const char *name) {
    kestu_triem_delete(parent.child_names, name, length_of(name));
}

void append(Membership &membership) {
    Object &parent = *membership.holder;
    kestu_tree_t *last = parent.last_child;
    membership.parent = parent.children;
    membership.prev = last;
    (last ? last->next : parent.children->child) = &membership;
    parent.last_child = &membership;
}

void extract(Membership &membership) {
    if (membership.holder->last_child == &membership)
        membership.holder->last_child = membership_of(membership.prev);
    kestu_tree_extract(&membership);
}

void attach(Membership &membership, Object &child) {
    membership.next_of_child = child.memberships;
    if (child.memberships)
        child.memberships->prev_of_child = &membership;
    child.memberships = &membership;
}

void detach(Membership &membership, Object &child) {
    Membership *prev = membership.prev_of_child, *next = membership.next_of_child;
    (prev ? prev->next_of_child : child.memberships) = next;
    if (next)
        next->prev_of_child = prev;
}

// A node whose name stays taken is kept without its child until the name goes.
void park(Membership &membership) {
    Object &parent = *membership.holder;
    membership.data = nullptr;
    membership.next = parent.parked;
    if (parent.parked)
        parent.parked->prev = &membership;
    parent.parked = &membership;
}

void release_parked(Membership &membership) {
    Object &parent = *membership.holder;
    if (parent.parked == &membership)
        parent.parked = membership_of(membership.next);
    kestu_treem_node_delete(&membership);
}

// Takes the child out of the tree of its parent. Its name there stays taken, if there is one.
void take_out(Membership &membership) {
    detach(membership, *child_of(membership));
    extract(membership);
    if (membership.named && membership.holder->child_names)
        park(membership);
    else
        kestu_mem_free(&membership);
}

// Takes the child out if there is one, and gives the name back under which it is known.
void remove_named(Membership &membership, const char *name) {
    forget_name(*membership.holder, name);
    membership.named = false;
    if (child_of(membership))
        take_out(membership);
    else
        release_parked(membership);
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

kestu_error_t *make_membership(Object &parent, Object &child, Membership **out) {
    if (!parent.children)
        return fail(KESTU_ERR_TREE_INSERTION);
    if (kestu_error_t *err = kestu_mem_malloc(sizeof(Membership), out))
        return wrap(wrap(err, "Can't allocate memory for treem node."),
                    "Unable to append child Tree node.");
    **out = {};
    (*out)->tag = child.type;
    (*out)->data = static_cast<kestu_obj_t *>(&child);
    (*out)->holder = &parent;
    (*out)->named = child.name && parent.child_names;
    return nullptr;
}

kestu_error_t *add_child(Object &parent, Object &child) {
    if (find_named(&parent, child.name))
        return fail(KESTU_ERR_CHILD_EXISTS, "There is already a child with name '%s'", child.name);
    Membership *membership = nullptr;
    kestu_error_t *err = make_membership(parent, child, &membership);
    if (!err && membership->named)
        err = kestu_triem_insert(parent.child_names, child.name, length_of(child.name), membership);
    if (err) {
        kestu_mem_free(membership);
        return err;
    }
    append(*membership);
    attach(*membership, child);
    set_parent(child, &parent);
    return nullptr;
}

// When the object was added several times, the place where it was first.
Membership *find_child(const Object &parent, const Object &child) {
    Membership *found = nullptr;
    for (Membership *m = child.memberships; m; m = m->next_of_child)
        if (m->holder == &parent)
            found = m;
    return found;
}

} // namespace

namespace kestu {

void forget_names(Object &parent) {
    kestu_triem_destroy(&parent.child_names);
    while (parent.parked)
        release_parked(*parent.parked);
}

Object *take_first_child(Object &parent) {
    Membership *first = membership_of(kestu_tree_get_first(parent.root.child));
    if (!first)
        return nullptr;
    Object *child = child_of(*first);
    take_out(*first);
    set_parent(*child, nullptr);
    return child;
}

void leave_family(Object &object) {
    // Also what the last parent has parked, when that name is still this object's.
    if (object.parent)
        if (Membership *known = find_named(object.parent, object.name))
            if (!child_of(*known))
                remove_named(*known, object.name);
    while (Membership *membership = object.memberships)
        if (find_named(membership->holder, object.name) == membership)
            remove_named(*membership, object.name);
        else
            take_out(*membership);
    set_parent(object, nullptr);
    while (object.wards)
        set_parent(*object.wards, nullptr);
}

} // namespace kestu

kestu_error_t *kestu_obj_addc(kestu_obj_t *parent, kestu_obj_t *child) {
    return wrap(add_child(*object_of(parent), *object_of(child)), "Cannot add child to object");
}

kestu_obj_t *kestu_obj_getc(kestu_obj_t *parent, const char *name) {
    const Membership *known = find_named(parent, name);
    return known ? child_of(*known) : nullptr;
}

// Kept: what is no child comes back too. Relied on by: callers that pass the result on.
kestu_obj_t *kestu_obj_removec(kestu_obj_t *parent, const char *name, kestu_obj_t *obj) {
    if (name) {
        Membership *known = find_named(parent, name);
        kestu_obj_t *child = known ? child_of(*known) : nullptr;
        if (known)
            remove_named(*known, name);
        return child;
    }
    if (Membership *membership = obj ? find_child(*object_of(parent), *object_of(obj)) : nullptr)
        take_out(*membership);
    return obj;
}

// Kept: the name of what is removed stays in the index. Relied on by: users who count on a name
// being given once.
kestu_obj_t *kestu_obj_removec_func(kestu_obj_t *parent, kestu_int_func predicate, void *baton) {
    kestu_tree_t *node =
        kestu_tree_search_func(kestu_tree_get_child(parent->children), predicate, baton);
    if (!node)
        return nullptr;
    kestu_obj_t *child = child_of(*membership_of(node));
    take_out(*membership_of(node));
    return child;
}

kestu_error_t *kestu_obj_child_walk_err_first(kestu_obj_t *obj, kestu_err_func pre,
                                              kestu_err_func post, void *baton) {
    return wrap(kestu_tree_walk_err_first(obj->children, pre, post, baton),
                "Cannot walk objects childs");
}
