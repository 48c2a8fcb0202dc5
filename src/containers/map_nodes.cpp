// Children of the map's nodes: their order, and how they come and go.
#include "containers/map_nodes.hpp"

#include <cstring>
#include <utility>

namespace kestu::map {

constinit const Shape shapes[kinds] = {
    {Kind::small4, 4, 64},    {Kind::small12, 12, 128}, {Kind::small19, 19, 192},
    {Kind::small32, 32, 320}, {Kind::indexed, 69, 832}, {Kind::direct, slots, 2176},
};

namespace {

void adopt(Node &node, Child child) {
    if (child.is_node())
        child.node().parent = &node;
}

// The number of children of a small node in front of a slot.
Place small_place(const Node &node, Slot slot) {
    if (slot == end_slot)
        return 0;
    Place place = node.has_end;
    while (place < node.count && node.bytes()[place] + Slot{1} < slot)
        ++place;
    return place;
}

Place search_up(const Node &node, Slot slot) {
    while (slot < slots && !at_slot(node, slot))
        ++slot;
    return slot;
}

Place search_down(const Node &node, Slot slot) {
    while (slot-- > 0)
        if (at_slot(node, slot))
            return slot;
    return slots;
}

Slot slot_at(const Node &node, Place place) {
    if (!node.is_small())
        return place;
    return place == 0 && node.has_end ? end_slot : node.bytes()[place] + Slot{1};
}

} // namespace

Place place_from(const Node &node, Slot slot) {
    if (!node.is_small())
        return search_up(node, slot);
    const Place place = small_place(node, slot);
    return place < node.count ? place : slots;
}

Place place_before(const Node &node, Slot slot) {
    if (!node.is_small())
        return search_down(node, slot);
    const Place place = small_place(node, slot);
    return place > 0 ? place - 1 : slots;
}

Place next_place(const Node &node, Place place) {
    if (!node.is_small())
        return search_up(node, place + 1);
    return place + 1 < node.count ? place + 1 : slots;
}

Place previous_place(const Node &node, Place place) {
    if (!node.is_small())
        return search_down(node, place);
    return place > 0 ? place - 1 : slots;
}

Place last_place(const Node &node) {
    return node.is_small() ? node.count - Place{1} : search_down(node, slots);
}

Child &link_at(Node &node, Slot slot) {
    Child *children = node.children();
    if (node.is_small())
        return children[small_place(node, slot)];
    return node.kind == Kind::direct ? children[slot] : children[node.bytes()[slot] - 1];
}

size_t shape_of(const Node &node) {
    size_t number = 0;
    while (shapes[number].kind != node.kind)
        ++number;
    return number;
}

void begin_node(Node &node, const Shape &shape, Node *parent, size_t depth) {
    node = {.parent = parent, .depth = depth, .count = 0, .has_end = false, .kind = shape.kind};
    if (node.kind == Kind::indexed)
        std::memset(node.bytes(), 0, slots);
    if (node.kind == Kind::direct)
        std::fill_n(node.children(), slots, Child());
}

void add_child(Node &node, Slot slot, Child child) {
    Child *children = node.children();
    if (node.is_small()) {
        const Place place = small_place(node, slot);
        const size_t behind = node.count - place;
        std::memmove(children + place + 1, children + place, behind * sizeof *children);
        std::memmove(node.bytes() + place + 1, node.bytes() + place, behind);
        children[place] = child;
        node.bytes()[place] = static_cast<uint8_t>(slot - 1);
    } else if (node.kind == Kind::direct) {
        children[slot] = child;
    } else {
        children[node.count] = child;
        node.bytes()[slot] = static_cast<uint8_t>(node.count + 1);
    }
    node.has_end |= slot == end_slot;
    ++node.count;
    adopt(node, child);
}

void remove_child(Node &node, Slot slot) {
    Child *children = node.children();
    if (node.is_small()) {
        const Place place = small_place(node, slot);
        const size_t behind = node.count - place - 1;
        std::memmove(children + place, children + place + 1, behind * sizeof *children);
        std::memmove(node.bytes() + place, node.bytes() + place + 1, behind);
    } else if (node.kind == Kind::direct) {
        children[slot] = Child();
    } else { // the last child moves to the place that is free
        uint8_t *numbers = node.bytes();
        const uint8_t number = std::exchange(numbers[slot], uint8_t{0});
        if (number != node.count) {
            *std::find(numbers, numbers + slots, node.count) = number;
            children[number - 1] = children[node.count - 1];
        }
    }
    node.has_end &= slot != end_slot;
    --node.count;
}

void move_children(Node &to, const Node &from) {
    if (to.is_small() && from.is_small()) {
        to.count = from.count;
        to.has_end = from.has_end;
        std::memcpy(to.bytes(), from.bytes(), from.count);
        std::copy_n(from.children(), from.count, to.children());
        for (Place place = 0; place < to.count; ++place)
            adopt(to, to.children()[place]);
        return;
    }
    for (Place place = place_from(from, 0); place != slots; place = next_place(from, place))
        add_child(to, slot_at(from, place), at_place(from, place));
}

} // namespace kestu::map
