// Arrays of any number of dimensions. The blocks of one depth are numbered through, and a block is
// reached from the outermost one by its number: nothing recurses, however many dimensions there
// are.
#include "kestu_array.h"

#include "kestu_mem.h"
#include "mem/memory.hpp"

#include <cstring>

using namespace kestu;

namespace {

uint32_t last_depth(const kestu_mem_array_t &array) {
    return array.ndims - 1;
}

size_t entry_size(const kestu_mem_array_t &array, uint32_t depth) {
    return depth == last_depth(array) ? array.elsize : sizeof(void *);
}

// The number of the innermost blocks, those that hold elements.
uint64_t count_innermost(const kestu_mem_array_t &array) {
    uint64_t blocks = 1;
    for (uint32_t depth = 0; depth < last_depth(array); ++depth)
        blocks *= array.dims[depth];
    return blocks;
}

// The way from the outermost block to innermost block `number` of `blocks`.
class Descent {
  public:
    Descent(kestu_mem_array_t &walked, uint64_t blocks, uint64_t number)
        : array(walked), below_(blocks), rest_(number) {}

    // Goes on through `block`, the one at hand, which is not an innermost one: where in it the
    // pointer to the next one stands.
    void **through(void *block) {
        below_ /= array.dims[depth++];
        void **slot = static_cast<void **>(block) + rest_ / below_;
        rest_ %= below_;
        return slot;
    }

    // Whether no later innermost block hangs off the block at hand.
    bool comes_last() const { return rest_ == below_ - 1; }

    bool at_end() const { return depth == last_depth(array); }

    kestu_mem_array_t &array;
    uint32_t depth = 0; // of the block at hand

  private:
    uint64_t below_; // innermost blocks that hang off the block at hand
    uint64_t rest_;  // and which of them is wanted
};

// Releases the blocks that exist on the way from `block` on, innermost first: going down, each
// block, whose entries are not needed any more, keeps in its first one where to go back to.
void free_way(Descent way, void *block) {
    void **above = nullptr;
    while (block && !way.at_end()) {
        void *next = *way.through(block);
        auto **entries = static_cast<void **>(block);
        entries[0] = above;
        above = entries;
        block = next;
    }
    kestu_mem_free(block);
    while (above) {
        void **entries = above;
        above = static_cast<void **>(entries[0]);
        kestu_mem_free(entries);
    }
}

void free_storage(kestu_mem_array_t &array) {
    const uint64_t blocks = count_innermost(array);
    for (uint64_t number = 0; number < blocks; ++number) {
        Descent way(array, blocks, number);
        void *block = array.data;
        while (!way.comes_last())
            block = *way.through(block);
        free_way(way, block);
    }
}

// Makes the blocks that are missing on the way; when one fails, releases all that are on it.
kestu_error_t *build_way(Descent way) {
    const Descent start = way;
    kestu_mem_array_t &array = way.array;
    for (void **slot = &array.data;; slot = way.through(*slot)) {
        kestu_error_t *err = nullptr;
        if (!*slot)
            err = kestu_mem_calloc(array.dims[way.depth], entry_size(array, way.depth), slot);
        if (err)
            free_way(start, array.data);
        if (err || way.at_end())
            return err;
    }
}

// Refuses at once what could only fail after all memory is spent: blocks that together have no
// size. A single block that has none is left to its allocation, which comes on the way to element
// 0.
kestu_error_t *check_size(const kestu_mem_array_t &array) {
    constexpr size_t most = PTRDIFF_MAX;
    uint64_t blocks = 1;
    for (uint32_t depth = 0; depth < array.ndims; ++depth) {
        size_t block = 0;
        if (__builtin_mul_overflow(array.dims[depth], entry_size(array, depth), &block) ||
            block > most)
            return nullptr;
        if (blocks > most / block)
            return no_memory(SIZE_MAX);
        blocks *= array.dims[depth];
    }
    return nullptr;
}

// Blocks come into being on the way to the first element that they hold.
// Kept: when one fails, complete blocks beside the way to it are not released.
// Relied on by: programs that note the blocks that they are given.
kestu_error_t *build_storage(kestu_mem_array_t &array) {
    if (kestu_error_t *err = check_size(array))
        return err;
    const uint64_t blocks = count_innermost(array);
    kestu_error_t *err = nullptr;
    for (uint64_t number = 0; !err && number < blocks; ++number)
        err = build_way({array, blocks, number});
    return err;
}

kestu_error_t *append_dimension(kestu_mem_array_t &array, int count) {
    uint32_t *dims = array.dims;
    const size_t bytes = (size_t{array.ndims} + 1) * sizeof *dims;
    if (kestu_error_t *err = kestu_mem_realloc(bytes, &dims))
        return err;
    array.dims = dims;
    array.dims[array.ndims++] = static_cast<uint32_t>(count);
    return nullptr;
}

kestu_error_t *fill_array(kestu_mem_array_t &array, int first, va_list rest) {
    kestu_error_t *err = kestu_mem_calloc(1, sizeof *array.dims, &array.dims);
    if (err)
        return err;
    array.dims[array.ndims++] = static_cast<uint32_t>(first);
    for (int count; !err && (count = va_arg(rest, int)) != 0;)
        err = append_dimension(array, count);
    return err ? err : build_storage(array);
}

kestu_error_t *make_array(kestu_mem_array_t **out, size_t elsize, int first, va_list rest) {
    if (elsize == 0)
        return fail(KESTU_ERR_ELEMENT_SIZE, "Cannot allocate array for elements of size %zu bytes.",
                    elsize);
    if (first == 0)
        return fail(KESTU_ERR_ELEMENT_COUNT,
                    "Cannot allocate memory for %d elements in first dimension.", first);
    if (kestu_error_t *err = kestu_mem_calloc(1, sizeof **out, out))
        return err;
    kestu_mem_array_t *array = *out;
    array->elsize = elsize;
    kestu_error_t *err = fill_array(*array, first, rest);
    if (err) {
        kestu_mem_free(array->dims);
        kestu_mem_free(array);
    }
    return err;
}

kestu_error_t *check_element_size(const kestu_mem_array_t &array, size_t elsize) {
    return elsize == array.elsize
               ? nullptr
               : fail(0, "Expected element size %zu, found %zu", array.elsize, elsize);
}

kestu_error_t *check_element(const kestu_mem_array_t &array, size_t elsize, int ndims,
                             const uint32_t *positions) {
    if (kestu_error_t *err = check_element_size(array, elsize))
        return err;
    if (static_cast<uint32_t>(ndims) != array.ndims)
        return fail(0, "Expected dimensions %d, found %d", static_cast<int>(array.ndims), ndims);
    for (uint32_t d = 0; d < array.ndims; ++d)
        if (positions[d] >= array.dims[d])
            return fail(0, "Number of values in dimension %d is %d, requested position is %d",
                        static_cast<int>(d + 1), static_cast<int>(array.dims[d]),
                        static_cast<int>(positions[d]));
    return nullptr;
}

char *element_at(const kestu_mem_array_t &array, const uint32_t *positions) {
    const uint32_t last = last_depth(array);
    void *block = array.data;
    for (uint32_t d = 0; d < last; ++d)
        block = static_cast<void **>(block)[positions[d]];
    return static_cast<char *>(block) + positions[last] * array.elsize;
}

} // namespace

kestu_error_t *kestu_mem_array_alloc(kestu_mem_array_t **out, size_t elsize, int first, ...) {
    va_list rest;
    va_start(rest, first);
    kestu_error_t *err = kestu_mem_array_valloc(out, elsize, first, rest);
    va_end(rest);
    return err;
}

kestu_error_t *kestu_mem_array_valloc(kestu_mem_array_t **out, size_t elsize, int first,
                                      va_list rest) {
    kestu_error_t *err = make_array(out, elsize, first, rest);
    if (err)
        *out = nullptr;
    return wrap(err, "Cannot allocate array.");
}

void kestu_mem_array_free(kestu_mem_array_t *array) {
    if (!array)
        return;
    free_storage(*array);
    kestu_mem_free(array->dims);
    kestu_mem_free(array);
}

kestu_error_t *kestu_mem_array_copytoel(kestu_mem_array_t *array, const void *src, size_t elsize,
                                        int ndims, const uint32_t *positions) {
    if (kestu_error_t *err = check_element(*array, elsize, ndims, positions))
        return wrap(err, "Cannot copy data to element.");
    std::memcpy(element_at(*array, positions), src, elsize);
    return nullptr;
}

kestu_error_t *kestu_mem_array_copyfromel(const kestu_mem_array_t *array, void *dst, size_t elsize,
                                          int ndims, const uint32_t *positions) {
    if (kestu_error_t *err = check_element(*array, elsize, ndims, positions))
        return wrap(err, "Cannot copy data from element.");
    std::memcpy(dst, element_at(*array, positions), elsize);
    return nullptr;
}

// Kept: the message has no full stop. Relied on by: programs that compare it.
kestu_error_t *kestu_mem_array_allset(kestu_mem_array_t *array, int value, size_t elsize) {
    if (kestu_error_t *err = check_element_size(*array, elsize))
        return wrap(err, "Cannot set all elements of an array");
    const size_t bytes = array->dims[last_depth(*array)] * elsize;
    const uint64_t blocks = count_innermost(*array);
    for (uint64_t number = 0; number < blocks; ++number) {
        Descent way(*array, blocks, number);
        void *block = array->data;
        while (!way.at_end())
            block = *way.through(block);
        std::memset(block, value, bytes);
    }
    return nullptr;
}
