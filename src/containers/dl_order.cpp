// Sorting, reversing and rearranging doubly linked lists.
#include "containers/links.hpp"
#include "kestu_dl.h"

#include <algorithm>
#include <utility>

using namespace kestu;

namespace {

using Node = kestu_dl_t;

// Two stretches of a list of which the first came first, linked by `next` alone, as are all below.
// Nodes of equal rank keep their order. A node is only written to where the other stretch goes on.
// `passed` is called with each node that has found its place but for those behind the last pair.
template <typename Behind, typename Pass>
Node *merge(Node *first, Node *second, Behind is_behind, Pass passed) {
    Node *merged = nullptr;
    Node **end = &merged;
    const auto pass = [&](Node *&head) {
        passed(head);
        end = &head->next;
        head = *end;
        if (head)
            __builtin_prefetch(head->next);
    };
    while (first && second) {
        *end = first;
        while (first && !is_behind(first, second))
            pass(first);
        if (!first)
            break;
        *end = second;
        do
            pass(second);
        while (second && is_behind(first, second));
    }
    *end = first ? first : second;
    return merged;
}

// Links `node`, which comes behind `prev`, and all behind it backwards.
void link_back(Node *prev, Node *node) {
    for (; node; node = node->next)
        node->prev = std::exchange(prev, node);
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

// Stretch i is made of 2^i runs or missing, so that each node is merged log2(runs) times. The last
// merging, through all nodes, links them backwards.
template <typename Behind>
Node *merge_sort(Node *list, Behind is_behind) {
    Node *stretches[64] = {};
    const auto merge_only = [=](Node *first, Node *second) {
        return merge(first, second, is_behind, [](Node *) {});
    };
    size_t count = 0;
    while (list) {
        Node *merged = take_run(list, is_behind);
        size_t i = 0;
        for (; stretches[i]; ++i)
            merged = merge_only(std::exchange(stretches[i], nullptr), merged);
        stretches[i] = merged;
        count = std::max(count, i + 1);
    }
    if (count == 0)
        return nullptr;
    Node *sorted = nullptr;
    for (size_t i = 0; i + 1 < count; ++i)
        sorted = merge_only(stretches[i], sorted);
    Node *last = nullptr;
    sorted = merge(stretches[count - 1], sorted, is_behind,
                   [&last](Node *node) { node->prev = std::exchange(last, node); });
    link_back(last, last ? last->next : sorted);
    return sorted;
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
