// The doubly linked families beside a vector of tags: order, links, handles and which nodes are
// occupied, after any steps.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_cdl.h"
#include "kestu_dl.h"

#include <set>
#include <vector>

namespace kestu::fuzz {

// The nodes of the list of `any`, first to last. No link of one node contradicts that of its
// neighbour, and the list ends.
template <typename Node>
std::vector<Node *> checked_nodes(Node *any) {
    constexpr size_t too_many = 100000;
    std::vector<Node *> nodes;
    for (size_t steps = 0; any && any->prev; any = any->prev)
        require(++steps < too_many && any->prev->next == any);
    for (Node *node = any; node; node = node->next) {
        nodes.push_back(node);
        require(nodes.size() < too_many && (!node->next || node->next->prev == node));
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
class ListModel {
  protected:
    explicit ListModel(Input &input) : in(input) {}

    size_t below(size_t n) { return n > 256 ? in.take<uint16_t>() % n : in.byte() % n; }
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
        require(handle == held ? held : added);
        require(added->data == datum_of(last));
        tags.insert(at(where), last);
    }

    Input &in;
    std::vector<uint32_t> tags;
    uint32_t last = 0;
    Node *handle = nullptr;
    size_t place = 0; // of the handle
};

enum Where { after, before, first, last };

struct PoolList {
    static constexpr const char *node_error = nullptr;
    ScratchPool pool;

    auto add(Where where, kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
        constexpr decltype(&kestu_dl_append) functions[] = {kestu_dl_add_after, kestu_dl_add_before,
                                                            kestu_dl_prepend, kestu_dl_append};
        return functions[where](handle, tag, data, out, pool);
    }
    static constexpr auto drop = kestu_dl_delete;
    static constexpr auto drop_func = kestu_dl_delete_func;
    static constexpr auto drop_obj = kestu_dl_delete_obj;
    static constexpr auto destroy_func = kestu_dl_destroy_func;
};

struct HeapList {
    static constexpr const char *node_error = "Can't allocate memory for dlm node.";
    ScratchPool pool;

    auto add(Where where, kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
        constexpr decltype(&kestu_dlm_append) functions[] = {
            kestu_dlm_add_after, kestu_dlm_add_before, kestu_dlm_prepend, kestu_dlm_append};
        return functions[where](handle, tag, data, out);
    }
    static constexpr auto drop = kestu_dlm_delete;
    static constexpr auto drop_func = kestu_dlm_delete_func;
    static constexpr auto drop_obj = kestu_dlm_delete_obj;
    static constexpr auto destroy_func = kestu_dlm_destroy_func;
};

template <typename Kind>
class DlModel : public ListModel<kestu_dl_t> {
  public:
    explicit DlModel(Input &input) : ListModel(input) {}
    ~DlModel() {
        f.destroy_func(
            &handle, [](uint32_t, void *, void *) {}, nullptr);
    }
    DlModel(const DlModel &) = delete;
    DlModel &operator=(const DlModel &) = delete;

    void run() {
        while (!in.empty()) {
            step();
            require(checked_tags(handle) == tags);
            require(kestu_dl_count(handle) == tags.size());
            require(!kestu_dl_get_n(handle, tags.size()));
        }
    }

  private:
    // The steps. `other` is any node, at `there`.
    void add() {
        const size_t n = tags.size(), places[] = {n ? place + 1 : 0, place, 0, n};
        const auto where = static_cast<Where>(below(4));
        expect_added(places[where], [&](uint32_t tag) {
            kestu_dl_t *added = nullptr;
            require(succeeded(f.add(where, &handle, tag, datum_of(tag), &added)));
            return added;
        });
    }
    void exchange() {
        require(succeeded(kestu_dl_exchange(handle, other)));
        std::swap(tags[place], tags[there]);
    }
    // The first node with the datum. A handle to it moves to the next node, or else the previous.
    void drop_by_datum() {
        const auto found = std::find_if(tags.begin(), tags.end(),
                                        [&](uint32_t tag) { return datum_of(tag) == other->data; });
        kestu_dl_t *const held = found != at(place) ? handle
                                 : handle->next     ? handle->next
                                                    : handle->prev;
        f.drop_obj(&handle, other->data);
        tags.erase(found);
        require(handle == held);
    }
    void drop() {
        if (there == place)
            return;
        const auto is_out = [](uint32_t tag, void *data, void *rest) {
            const auto left = checked_tags(static_cast<kestu_dl_t *>(rest));
            require(data == datum_of(tag));
            require(std::find(left.begin(), left.end(), tag) == left.end());
        };
        below(2) ? f.drop(other) : f.drop_func(other, is_out, handle);
        tags.erase(at(there));
    }
    // Beside another; where a node stands already, without leaving it.
    void move() {
        const bool behind = below(2);
        if (other != handle && other != (behind ? handle->prev : handle->next)) {
            require(kestu_dl_extract(handle) == handle);
        }
        require(
            succeeded((behind ? kestu_dl_insert_after : kestu_dl_insert_before)(other, handle)));
        if (other == handle)
            return;
        tags.erase(at(place));
        tags.insert(std::find(tags.begin(), tags.end(), other->tag) + behind, handle->tag);
    }
    // Cut in two, and joined the other way round; joined to itself, nothing changes.
    void join() {
        kestu_dl_t *front = kestu_dl_get_first(handle);
        require(kestu_dl_join(handle, other) == front);
        require(kestu_dl_join(handle, nullptr) == front);
        require(kestu_dl_join(nullptr, handle) == nullptr);
        if (place == 0)
            return;
        handle->prev = handle->prev->next = nullptr;
        require(kestu_dl_join(handle, front) == handle);
        std::rotate(tags.begin(), at(place), tags.end());
    }

    void step() {
        move_handle();
        there = tags.empty() || below(3) == 0 ? place : below(tags.size());
        other = kestu_dl_get_n(handle, there);
        constexpr void (DlModel::*steps[])() = {
            &DlModel::add,  &DlModel::exchange, &DlModel::drop_by_datum,
            &DlModel::drop, &DlModel::move,     &DlModel::join,
        };
        (this->*steps[handle && below(3) ? below(6) : 0])();
    }

    Kind f;
    kestu_dl_t *other = nullptr;
    size_t there = 0;
};
class CdlModel : public ListModel<kestu_cdl_t> {
  public:
    explicit CdlModel(Input &input) : ListModel(input) {}

    void run() {
        while (!in.empty()) {
            change();
            require(checked_tags(handle) == tags);
            move_handle();
            require(walked() == outward(place, true));
            const Order occupied = outward(0, true);
            require(kestu_cdl_count(handle) == occupied.size());
            const size_t k = below(occupied.size() + 1);
            const kestu_cdl_t *nth = kestu_cdl_get_n(handle, k);
            require(k < occupied.size() ? nth && nth->tag == occupied[k] : !nth);
        }
    }

  private:
    using Order = std::vector<uint32_t>;

    Order walked() {
        Order order;
        const auto note = [](uint32_t tag, void *, void *seen) {
            static_cast<Order *>(seen)->push_back(tag);
        };
        kestu_cdl_walk(handle, note, &order);
        return order;
    }
    // The tags, occupied or free, in outward order from a place.
    Order outward(size_t from, bool occupied) {
        Order order;
        const auto add = [&](uint32_t tag) {
            if (free.contains(tag) != occupied)
                order.push_back(tag);
        };
        std::for_each(tags.rend() - static_cast<ptrdiff_t>(from) - 1, tags.rend(), add);
        std::for_each(at(from + 1), tags.end(), add);
        return order;
    }

    void add() {
        const size_t n = tags.size(), places[] = {n, 0, place + (n > 0)};
        constexpr decltype(&kestu_cdl_append) functions[] = {kestu_cdl_append, kestu_cdl_prepend,
                                                             kestu_cdl_add};
        const size_t kind = below(3);
        expect_added(places[kind], [&](uint32_t tag) {
            kestu_cdl_t *added = nullptr;
            require(succeeded(functions[kind](&handle, tag, datum_of(tag), &added, pool)));
            return added;
        });
    }
    void insert() {
        const bool behind = below(2);
        expect_added(place + behind, [&](uint32_t tag) {
            kestu_cdl_t *lone = nullptr;
            require(succeeded(kestu_cdl_append(&lone, tag, datum_of(tag), nullptr, pool)));
            require(succeeded(
                (behind ? kestu_cdl_insert_after : kestu_cdl_insert_before)(handle, lone)));
            return lone;
        });
    }
    void release() {
        kestu_cdl_set_free(handle);
        free.insert(handle->tag);
    }
    void release_by_datum() {
        void *const datum = datum_of(static_cast<uint32_t>(below(7)));
        kestu_cdl_set_free_obj(handle, datum);
        for (const uint32_t tag : outward(place, true))
            if (datum_of(tag) == datum) {
                free.insert(tag);
                return;
            }
    }
    void reuse() {
        const kestu_cdl_t *ready = kestu_cdl_get_ready(handle);
        const Order found = outward(place, false);
        require(found.empty() ? !ready : ready && ready->tag == found[0]);
        if (ready)
            free.erase(ready->tag);
    }

    void change() {
        constexpr void (CdlModel::*steps[])() = {&CdlModel::release, &CdlModel::release_by_datum,
                                                 &CdlModel::reuse,   &CdlModel::reuse,
                                                 &CdlModel::add,     &CdlModel::insert};
        move_handle();
        (this->*steps[handle ? below(tags.size() < 60 ? 6 : 4) : 4])();
    }

    ScratchPool pool;
    std::set<uint32_t> free;
};

} // namespace kestu::fuzz
