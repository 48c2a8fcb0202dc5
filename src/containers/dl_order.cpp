// Sorting, reversing and rearranging doubly linked lists.
#include "containers/links.hpp"
#include "kestu_dl.h"

#include <utility>

using namespace kestu;

namespace {

using Node = kestu_dl_t;

// Two stretches of a list of which the first came first, linked by `next` alone, as are all below.
// Nodes of equal rank keep their order.
template <typename Behind>
Node *merge(Node *first, Node *second, Behind is_behind) {
    Node *heads[2] = {first, second};
    Node *merged = nullptr;
    Node **end = &merged;
    while (heads[0] && heads[1]) {
        // Which of the two comes is anybody's guess, so it is not left to a branch.
        Node *&head = heads[is_behind(heads[0], heads[1])];
        *end = head;
        end = &head->next;
        head = head->next;
        if (head)
            __builtin_prefetch(head->next);
    }
    *end = heads[0] ? heads[0] : heads[1];
    return merged;
}

// Takes the longest stretch off the front of a list that is in order already.
template <typename Behind>
Node *take_run(Node *&list, Behind is_behind) {
    Node *const first = list;
    Node *last = first;
    while (last->next && !is_behind(last, last->next))
        last = last->next;
    list = std::exchange(last->next, nullptr);
    return first;
}

// Stretch i is made of 2^i runs or missing, so that each node is merged log2(runs) times.
template <typename Behind>
Node *merge_sort(Node *list, Behind is_behind) {
    Node *stretches[64] = {};
    while (list) {
        Node *merged = take_run(list, is_behind);
        Node **stretch = stretches;
        for (; *stretch; ++stretch)
            merged = merge(std::exchange(*stretch, nullptr), merged, is_behind);
        *stretch = merged;
    }
    Node *sorted = nullptr;
    for (Node *stretch : stretches)
        sorted = merge(stretch, sorted, is_behind);
    return sorted;
}

void link_back(Node *first) {
    for (Node *node = first, *prev = nullptr; node; prev = std::exchange(node, node->next))
        node->prev = prev;
}

// Whether `last` is `first` or comes behind it, with `but` not among them.
bool reaches(const Node *first, const Node *last, const Node *but) {
    while (first && first != last && first != but)
        first = first->next;
    return first && first != but;
}

} // namespace

void kestu_dl_sort(kestu_dl_t **handle, kestu_dl_compare_func compare, void *baton) {
    *handle = merge_sort(first_of(*handle), [=](const Node *a, const Node *b) {
        return compare(a->tag, a->data, b->tag, b->data, baton) > 0;
    });
    link_back(*handle);
}

void kestu_dlm_sort(kestu_dl_t **handle, kestu_dl_compare_func compare, void *baton) {
    kestu_dl_sort(handle, compare, baton);
}

void kestu_dl_reverse(kestu_dl_t **handle) {
    Node *last = nullptr;
    for (Node *node = first_of(*handle); node; node = last->prev) {
        std::swap(node->prev, node->next);
        last = node;
    }
    *handle = last;
}

kestu_error_t *kestu_dl_splice(kestu_dl_t *node, kestu_dl_t *first, kestu_dl_t *last) {
    if (!node || !reaches(first, last, node))
        return wrap(fail(KESTU_ERR_LIST_INSERTION), "Unable to splice DL nodes.");
    if (first->prev)
        first->prev->next = last->next;
    if (last->next)
        last->next->prev = first->prev;
    Node *const next = node->next;
    node->next = first;
    first->prev = node;
    last->next = next;
    if (next)
        next->prev = last;
    return nullptr;
}
