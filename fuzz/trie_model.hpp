// A trie beside its model. Operations change both, and so does a caller who edits records: types,
// links, counts and keys, and nodes of his own.
#pragma once

#include "fuzz/check.hpp"
#include "kestu_mem.h"
#include "kestu_trie.h"

#include <array>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace kestu::fuzz {

// The functions that exist for both kinds of nodes, so that one model serves both.
class PoolTrie {
  public:
    static constexpr bool frees = false;
    static constexpr const char *failed = "Can't insert trie node.";

    auto create(kestu_trie_t **out) { return kestu_trie_create(out, pool_); }
    auto insert(kestu_trie_t *trie, std::string_view key, void *value) {
        return kestu_trie_insert(trie, key.data(), key.size(), value, pool_);
    }
    void remove(kestu_trie_t *trie, std::string_view key) {
        kestu_trie_delete(trie, key.data(), key.size());
    }
    void destroy(kestu_trie_t **trie) { kestu_trie_destroy(trie); }
    void *block(size_t size) { return apr_palloc(pool_, size); }

  private:
    ScratchPool pool_;
};

struct HeapTrie {
    static constexpr bool frees = true;
    static constexpr const char *failed = "Can't insert triem node.";

    auto create(kestu_trie_t **out) { return kestu_triem_create(out); }
    auto insert(kestu_trie_t *trie, std::string_view key, void *value) {
        return kestu_triem_insert(trie, key.data(), key.size(), value);
    }
    void remove(kestu_trie_t *trie, std::string_view key) {
        kestu_triem_delete(trie, key.data(), key.size());
    }
    void destroy(kestu_trie_t **trie) { kestu_triem_destroy(trie); }
    void *block(size_t size) {
        void *made = nullptr;
        require(succeeded(kestu_mem_malloc(size, &made)));
        return made;
    }
};

inline unsigned half(const std::string &key, size_t depth) {
    return static_cast<uint8_t>(key[depth / 2]) >> (depth % 2 * 4) & 15;
}

// The trie as it is told: recursive, and in the order of the telling.
struct TrieNode {
    uint32_t type = KESTU_TRIE_LEAF;
    std::string key = {};
    void *value = nullptr;
    uint32_t count = 0;
    std::unique_ptr<TrieNode> end = nullptr;
    std::array<std::unique_ptr<TrieNode>, 16> children = {};

    std::unique_ptr<TrieNode> &slot_of(const std::string &wanted, size_t depth) {
        return wanted.size() * 2 > depth ? children[half(wanted, depth)] : end;
    }
};
using Slot = std::unique_ptr<TrieNode>;

// The code of the error, or 0.
inline int insert_in(Slot &slot, Slot &added, size_t depth) {
    if (!slot) {
        slot = std::move(added);
        return 0;
    }
    if (slot->type > KESTU_TRIE_INNER)
        return 120091;
    if (slot->type == KESTU_TRIE_LEAF) {
        auto inner = std::make_unique<TrieNode>(TrieNode{.type = KESTU_TRIE_INNER, .count = 1});
        Slot &present = inner->slot_of(slot->key, depth);
        present = std::move(slot);
        const int code = insert_in(inner, added, depth);
        slot = std::move(code ? present : inner);
        return code;
    }
    Slot &next = slot->slot_of(added->key, depth);
    const bool ends = &next == &slot->end;
    const int code = ends && next ? 120082 : insert_in(next, added, depth + 1);
    slot->count += code == 0;
    return code;
}

inline void remove_from(Slot &slot, const std::string &key, size_t depth) {
    if (!slot || slot->type > KESTU_TRIE_INNER)
        return;
    if (slot->type == KESTU_TRIE_LEAF) {
        if (slot->key == key)
            slot = nullptr;
        return;
    }
    Slot &next = slot->slot_of(key, depth);
    if (&next == &slot->end && (!next || next->key != key))
        return;
    remove_from(next, key, depth + 1);
    if (--slot->count != 1)
        return;
    std::vector<Slot *> present;
    if (slot->end)
        present.push_back(&slot->end);
    for (auto &child : slot->children)
        if (child)
            present.push_back(&child);
    if (present.size() == 1 && (*present[0])->type == KESTU_TRIE_LEAF) {
        Slot risen = std::move(*present[0]);
        slot = std::move(risen);
    }
}

// The node at the end of a key's way, or null.
inline const TrieNode *seek(const Slot &slot, const std::string &key, size_t depth = 0) {
    const bool leads_on = slot && slot->type == KESTU_TRIE_INNER;
    return leads_on ? seek(slot->slot_of(key, depth), key, depth + 1) : slot.get();
}

inline bool is_told(const kestu_trie_node_t *node, const Slot &slot) {
    if (!node || !slot || node->type != slot->type || node->type > KESTU_TRIE_INNER)
        return node ? slot && node->type == slot->type : !slot;
    if (node->type == KESTU_TRIE_LEAF) {
        const auto *leaf = reinterpret_cast<const kestu_trie_leaf_t *>(node);
        return leaf->value == slot->value &&
               slot->key == std::string_view(reinterpret_cast<char *>(leaf->key), leaf->length);
    }
    const auto *inner = reinterpret_cast<const kestu_trie_inner_t *>(node);
    return inner->count == slot->count &&
           is_told(reinterpret_cast<kestu_trie_node_t *>(inner->end), slot->end) &&
           std::equal(inner->children, inner->children + 16, slot->children.begin(), is_told);
}

using Entries = std::vector<std::pair<std::string, void *>>;

inline void tell(const Slot &slot, Entries &entries) {
    if (!slot || slot->type > KESTU_TRIE_INNER)
        return;
    if (slot->type == KESTU_TRIE_LEAF)
        entries.emplace_back(slot->key, slot->value);
    tell(slot->end, entries);
    for (const Slot &child : slot->children)
        tell(child, entries);
}

template <typename Kind>
class TrieModel {
  public:
    // Whether keys have long runs in common, and whether the caller edits records.
    TrieModel(Input &input, bool long_runs, bool edits)
        : in_(input), long_runs_(long_runs), edits_(edits) {
        require(succeeded(functions_.create(&trie_)));
    }
    TrieModel(const TrieModel &) = delete;
    TrieModel &operator=(const TrieModel &) = delete;
    ~TrieModel() { functions_.destroy(&trie_); }

    void run() {
        while (!in_.empty()) {
            step();
            require(is_told(trie_->root, model_));
            const std::string any = key();
            const TrieNode *found = seek(model_, any);
            // An inner node that is taken for a leaf has no key.
            if (!found || found->value)
                require(kestu_trie_search(trie_, any.data(), any.size()) ==
                        (found && found->key == any ? found->value : nullptr));
            if (!edits_ && steps_ % 8 == 0)
                compare_walks();
        }
        for (const auto &stored : std::exchange(stored_, {}))
            operate(stored, false);
        require(is_told(trie_->root, model_));
        release();
    }

  private:
    using Real = kestu_trie_node_t;
    using Inner = kestu_trie_inner_t;
    using Leaf = kestu_trie_leaf_t;

    size_t below(size_t n) { return in_.byte() % n; }

    // In turns the trie grows and shrinks, also down to nothing.
    void step() {
        std::string used = key();
        const bool edits = edits_ && below(3) == 0;
        const bool inserts = !edits && below(8) >= (++steps_ / (long_runs_ ? 20 : 200) % 2 ? 6 : 2);
        if (edits)
            edit(used); // after which searches see the change
        // Where counts are to stay true, so that nodes go, keys are there.
        if (const auto next = stored_.lower_bound(used);
            !inserts && !edits_ && long_runs_ && next != stored_.end())
            used = *next;
        operate(used, inserts);
        if (!edits_)
            inserts ? (void)stored_.insert(used) : (void)stored_.erase(used);
    }

    void operate(const std::string &used, bool inserts) {
        if (!inserts) {
            remove_from(model_, used, 0);
            functions_.remove(trie_, used);
            return;
        }
        static char values[256];
        auto leaf = std::make_unique<TrieNode>(TrieNode{.key = used, .value = values + below(256)});
        void *value = leaf->value;
        kestu_error_t *err = functions_.insert(trie_, used, value);
        require((err ? err->code : 0) == insert_in(model_, leaf, 0));
        kestu_error_clear(err);
    }

    // Some letters, in half of the keys long runs that others share or leave on their way.
    std::string key() {
        const auto letters = [&](size_t most) {
            std::string text(below(most + 1), '\0');
            for (char &byte : text)
                byte = "\x00\x01\x10\x11"[below(4)];
            return text;
        };
        if (!long_runs_)
            return letters(4);
        constexpr size_t lengths[] = {8, 15, 16, 17, 18, 24};
        std::string text = letters(1) + std::string(lengths[below(6)], 'k');
        return text + letters(2);
    }

    void compare_walks() {
        const auto note = [](uint64_t length, const uint8_t *bytes, void *value, void *entries) {
            require(bytes[length] == 0);
            static_cast<Entries *>(entries)->emplace_back(
                std::string(reinterpret_cast<const char *>(bytes), length), value);
        };
        Entries told, walked;
        tell(model_, told);
        kestu_trie_walk(trie_, note, &walked);
        require(walked == told);
    }

    // One change to what the way of a key passes.
    void edit(const std::string &way) {
        size_t depth = 0;
        Real **real = &trie_->root;
        Slot *slot = &model_;
        for (size_t rest = below(60); rest > 0 && *slot && (*slot)->type == 1; --rest, ++depth) {
            if (way.size() * 2 == depth)
                return;
            real = &reinterpret_cast<Inner *>(*real)->children[half(way, depth)];
            slot = &(*slot)->children[half(way, depth)];
        }
        if (!*slot) {
            if (apart_.empty())
                return;
            *real = apart_.back().first;
            *slot = std::move(apart_.back().second);
            apart_.pop_back();
        } else if ((*slot)->type > KESTU_TRIE_INNER) {
            (*real)->type = (*slot)->type = types_[*real];
            types_.erase(*real);
        } else if (const size_t kind = below(5); kind == 0) {
            types_[*real] = (*slot)->type;
            (*real)->type = (*slot)->type = static_cast<uint32_t>(2 + below(9));
        } else if (kind == 1) {
            apart_.emplace_back(std::exchange(*real, nullptr), std::move(*slot));
        } else if ((*slot)->type == KESTU_TRIE_INNER) {
            reinterpret_cast<Inner *>(*real)->count = (*slot)->count =
                static_cast<uint32_t>(below(4));
        } else {
            kind == 2 ? grow(real, slot, depth) : rename(reinterpret_cast<Leaf *>(*real), **slot);
        }
    }

    // An inner node that nobody cleared takes the place of a leaf.
    void grow(Real **real, Slot *slot, size_t depth) {
        auto *inner = static_cast<Inner *>(functions_.block(sizeof(Inner)));
        Slot above = std::make_unique<TrieNode>(TrieNode{.type = KESTU_TRIE_INNER, .count = 1});
        const std::string &way = (*slot)->key;
        inner->type = KESTU_TRIE_INNER;
        inner->end = nullptr;
        inner->count = 1;
        std::fill_n(inner->children, 16, nullptr);
        if (way.size() * 2 > depth)
            inner->children[half(way, depth)] = *real;
        else
            inner->end = reinterpret_cast<Leaf *>(*real);
        above->slot_of(way, depth) = std::move(*slot);
        *real = reinterpret_cast<Real *>(inner);
        *slot = std::move(above);
    }

    // A shorter key, one that parts from the old one anywhere, or another in a block of its own.
    void rename(Leaf *leaf, TrieNode &leaf_model) {
        std::string &name = leaf_model.key;
        if (const size_t kind = below(3); kind == 0 && !name.empty()) {
            name.resize(below(name.size()));
        } else if (kind == 1 && !name.empty()) {
            name[below(name.size())] ^= static_cast<char>(1U << below(8));
        } else {
            name += 'k';
            // The library's own copies stand behind their leaves.
            if (Kind::frees && leaf->key != reinterpret_cast<uint8_t *>(leaf + 1))
                kestu_mem_free(leaf->key);
            leaf->key = static_cast<uint8_t *>(functions_.block(name.size()));
        }
        std::copy(name.begin(), name.end(), leaf->key);
        leaf->length = name.size();
    }

    // With what the caller took apart.
    void release() {
        for (const auto &[node, type] : types_)
            node->type = type;
        for (auto &[node, its_model] : apart_) {
            functions_.destroy(&trie_);
            require(succeeded(functions_.create(&trie_)));
            trie_->root = node;
        }
    }

    Input &in_;
    const bool long_runs_, edits_;
    Kind functions_;
    kestu_trie_t *trie_ = nullptr;
    Slot model_;
    size_t steps_ = 0;
    std::set<std::string> stored_;
    std::vector<std::pair<Real *, Slot>> apart_;
    std::map<Real *, uint32_t> types_; // of the nodes whose type is invalid now
};

template <typename Kind>
void run_trie_model(Input &input) {
    const uint8_t how = input.byte();
    TrieModel<Kind>(input, how % 4 != 0, how / 4 % 2).run();
}

} // namespace kestu::fuzz
