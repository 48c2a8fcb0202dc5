// The nodes of the map: an adaptive radix tree whose nodes say at which byte of the keys they
// branch, and nothing of the bytes that the keys below share before. See Leis, Kemper and Neumann,
// "The Adaptive Radix Tree", ICDE 2013, and Morrison, "PATRICIA", Journal of the ACM 15, 1968.
#pragma once

#include "containers/same_bytes.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <emmintrin.h>

namespace kestu::map {

// A value, and its key behind it.
struct Leaf {
    void *value;
    size_t length;

    uint8_t *key() { return reinterpret_cast<uint8_t *>(this + 1); }
    const uint8_t *key() const { return reinterpret_cast<const uint8_t *>(this + 1); }
};

struct Key {
    const uint8_t *bytes;
    size_t length;

    Key(const void *key, size_t size) : bytes(static_cast<const uint8_t *>(key)), length(size) {}
    explicit Key(const Leaf &leaf) : Key(leaf.key(), leaf.length) {}

    bool is_of(const Leaf &leaf) const {
        return leaf.length == length && are_same(leaf.key(), bytes, length);
    }
    size_t common(const Leaf &leaf) const {
        return same_bytes(bytes, leaf.key(), std::min(length, leaf.length));
    }
};

// What a key leads to at a depth: 0 for a key that ends there, or its byte plus 1.
using Slot = unsigned;
constexpr Slot end_slot = 0;
constexpr Slot slots = 257;

inline Slot slot_of(Key key, size_t depth) {
    return depth < key.length ? key.bytes[depth] + Slot{1} : end_slot;
}

// How a node keeps its children, by the word at which they begin. Small nodes keep bytes and
// children in order; the child of a key that ends, which has no byte, comes first. A direct node
// has a place for each slot. An indexed one tells for each slot which child it leads to, plus 1.
enum class Kind : uint8_t {
    small4 = 3,
    small12 = 4,
    small19 = 5,
    small32 = 7,
    direct = 8,
    indexed = 35
};

struct Node;

// What hangs in a slot: nothing, a node or a leaf.
class Child {
  public:
    Child() = default;
    Child(const Node &node) : address_(reinterpret_cast<uintptr_t>(&node)) {}
    Child(const Leaf &leaf) : address_(reinterpret_cast<uintptr_t>(&leaf) + 1) {}

    explicit operator bool() const { return address_ != 0; }
    bool is_leaf() const { return address_ & 1; }
    bool is_node() const { return *this && !is_leaf(); }
    Leaf &leaf() const { return *reinterpret_cast<Leaf *>(address_ - 1); }
    Node &node() const { return *reinterpret_cast<Node *>(address_); }

    void prefetch() const { __builtin_prefetch(reinterpret_cast<const void *>(address_)); }

  private:
    uintptr_t address_ = 0;
};

// The bytes and the children follow. A node is as large as whole cache lines, and all bytes of a
// small one stand in its first line.
struct Node {
    Node *parent;
    size_t depth; // of the byte at which it branches
    uint16_t count;
    bool has_end; // a child is the leaf of a key that ends at the depth
    Kind kind;

    static constexpr size_t bytes_at = 20;

    uint8_t *bytes() { return reinterpret_cast<uint8_t *>(this) + bytes_at; }
    const uint8_t *bytes() const { return reinterpret_cast<const uint8_t *>(this) + bytes_at; }
    Child *children() {
        return reinterpret_cast<Child *>(reinterpret_cast<uint64_t *>(this) +
                                         size_t{static_cast<uint8_t>(kind)});
    }
    const Child *children() const { return const_cast<Node *>(this)->children(); }
    bool is_small() const { return kind < Kind::direct; }
};
static_assert(offsetof(Node, kind) + 1 == Node::bytes_at);

// One bit for each byte of a small node that is `byte`.
inline uint32_t places_of(const Node &node, uint8_t byte) {
    const auto *bytes = reinterpret_cast<const __m128i *>(node.bytes());
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(byte));
    const auto match = [&](const __m128i *sixteen) {
        return static_cast<uint32_t>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(wanted, _mm_loadu_si128(sixteen))));
    };
    const uint32_t in_use = ~uint32_t{0} >> (32 - node.count) & ~uint32_t{node.has_end};
    return (match(bytes) | match(bytes + 1) << 16) & in_use;
}

// The place of a child in the order of the children: its number in a small node, else its slot.
// `slots` means none.
using Place = unsigned;

inline Child at_slot(const Node &node, Slot slot) {
    if (node.is_small()) {
        if (slot == end_slot)
            return node.has_end ? node.children()[0] : Child();
        const uint32_t places = places_of(node, static_cast<uint8_t>(slot - 1));
        return places ? node.children()[std::countr_zero(places)] : Child();
    }
    if (node.kind == Kind::direct)
        return node.children()[slot];
    const uint8_t number = node.bytes()[slot];
    return number ? node.children()[number - 1] : Child();
}

inline Child at_place(const Node &node, Place place) {
    return node.is_small() ? node.children()[place] : at_slot(node, place);
}

// The place of the slot, or of the first one behind it that has a child.
Place place_from(const Node &node, Slot slot);
// The place of the last child in front of the slot.
Place place_before(const Node &node, Slot slot);
Place next_place(const Node &node, Place place);
Place previous_place(const Node &node, Place place);
Place last_place(const Node &node);

// Where the child hangs that a slot leads to, which must be there.
Child &link_at(Node &node, Slot slot);

constexpr size_t kinds = 6;

struct Shape {
    Kind kind;
    uint16_t capacity;
    uint16_t bytes; // of the whole node
};

// From the narrowest on.
extern const Shape shapes[kinds];

// The number of the shape of a node.
size_t shape_of(const Node &node);

// Makes the node an empty one of the shape.
void begin_node(Node &node, const Shape &shape, Node *parent, size_t depth);

// Adds a child, for which there must be room, in a slot that is empty; or takes one out.
void add_child(Node &node, Slot slot, Child child);
void remove_child(Node &node, Slot slot);

// Gives an empty node all children of another one.
void move_children(Node &to, const Node &from);

} // namespace kestu::map
