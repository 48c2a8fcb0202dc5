// Which object a pool belongs to. APR could keep that with the pool, at a quarter of what it costs
// to make an object. But a pool lies in a block of its own of two pages at least, so that no two
// begin in the same page: a table of pages tells by two loads, on any thread, without a lock.
#include "obj/pool_owners.hpp"

#include "base/kept_errno.hpp"

#include <cstdlib>

using namespace kestu;

namespace {

constexpr unsigned page_bits = 12;
constexpr unsigned leaf_bits = 18;
constexpr unsigned address_bits = 47;

using Slot = std::atomic<Object *>;

// For the pages of 1 GiB. Of these tables only the parts that are used become memory.
struct Leaf {
    Slot owners[1 << leaf_bits];
};

constexpr size_t leaf_count = size_t{1} << (address_bits - page_bits - leaf_bits);
constinit std::atomic<Leaf *> leaves[leaf_count];

size_t page_of(apr_pool_t *pool) {
    return reinterpret_cast<uintptr_t>(pool) >> page_bits;
}

Leaf *leaf_of(size_t page) {
    const size_t index = page >> leaf_bits;
    return index < leaf_count ? leaves[index].load(std::memory_order_acquire) : nullptr;
}

Leaf *make_leaf(size_t page) {
    const KeptErrno kept;
    const size_t index = page >> leaf_bits;
    auto *made = index < leaf_count ? static_cast<Leaf *>(std::calloc(1, sizeof(Leaf))) : nullptr;
    Leaf *other = nullptr;
    if (!made || leaves[index].compare_exchange_strong(other, made, std::memory_order_acq_rel))
        return made;
    std::free(made);
    return other;
}

Slot &slot_of(Leaf &leaf, size_t page) {
    return leaf.owners[page & ((size_t{1} << leaf_bits) - 1)];
}

} // namespace

namespace kestu {

bool set_pool_owner(apr_pool_t *pool, Object &owner) {
    const size_t page = page_of(pool);
    Leaf *leaf = leaf_of(page);
    if (!leaf)
        leaf = make_leaf(page);
    if (leaf)
        slot_of(*leaf, page).store(&owner, std::memory_order_relaxed);
    return leaf;
}

void clear_pool_owner(apr_pool_t *pool) {
    const size_t page = page_of(pool);
    slot_of(*leaf_of(page), page).store(nullptr, std::memory_order_relaxed);
}

Object *pool_owner(apr_pool_t *pool) {
    const size_t page = page_of(pool);
    Leaf *leaf = leaf_of(page);
    Object *owner = leaf ? slot_of(*leaf, page).load(std::memory_order_relaxed) : nullptr;
    return owner && owner->pool == pool ? owner : nullptr;
}

} // namespace kestu
