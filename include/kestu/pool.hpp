// Pools: memory that goes as a whole.
//
//     kestu::Pool pool;                            // a child of the library's root
//     int *numbers = pool.make<int[]>(100);
//     std::pmr::vector<int> more(pool.resource());
//     more.assign(numbers, numbers + 100);
#pragma once

#include "../kestu_lib.h"
#include "error.hpp"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <memory_resource>

namespace kestu {
inline namespace KESTU_CPP {

// A pool of APR that it owns. Functions that take a pool take it as well as an apr_pool_t *.
class Pool {
  public:
    // A child of `parent`, with which it goes at the latest: then it must not be used any more, nor
    // destroyed.
    explicit Pool(apr_pool_t *parent = root()) { detail::check(open(parent)); }

    // As the constructor, but returns the error.
    static Expected<Pool> make(std::nothrow_t, apr_pool_t *parent = root()) {
        Pool pool(nullptr, nullptr);
        if (kestu_error_t *err = pool.open(parent))
            return detail::failed(err);
        return pool;
    }

    // Takes over a pool.
    static Pool adopt(apr_pool_t *pool) noexcept { return Pool(pool, nullptr); }

    Pool(Pool &&other) noexcept
        : pool_(std::exchange(other.pool_, nullptr)),
          resource_(std::exchange(other.resource_, nullptr)) {}
    Pool &operator=(Pool &&other) noexcept {
        std::swap(pool_, other.pool_);
        std::swap(resource_, other.resource_);
        return *this;
    }
    ~Pool() {
        if (pool_)
            apr_pool_destroy(pool_);
    }

    // The library's own pool.
    static apr_pool_t *root() noexcept { return kestu_pool; }

    // A child of this pool.
    Pool child() const { return Pool(pool_); }

    // As `child` above, but returns the error.
    Expected<Pool> child(std::nothrow_t) const { return make(std::nothrow, pool_); }

    // Gives all memory back for new use and destroys all children.
    void clear() {
        resource_ = nullptr;
        apr_pool_clear(pool_);
    }

    // Memory that goes with the pool; std::bad_alloc when there is none.
    void *allocate(size_t bytes, size_t alignment = 8) { return claim(pool_, bytes, alignment); }

    // A new object in the pool; one that has a destructor is destroyed with the pool.
    template <typename T, typename... Arguments>
    requires(!std::is_array_v<T>) T *make(Arguments &&...arguments) {
        T *object = new (allocate(sizeof(T), alignof(T))) T(std::forward<Arguments>(arguments)...);
        if constexpr (!std::is_trivially_destructible_v<T>)
            apr_pool_cleanup_register(pool_, object, destroy<T>, apr_pool_cleanup_null);
        return object;
    }

    // make<T[]>: a new array in the pool, whose elements are zero.
    template <typename T>
    requires std::is_unbounded_array_v<T>
    auto make(size_t count) {
        using Element = std::remove_extent_t<T>;
        static_assert(std::is_trivially_destructible_v<Element>);
        if (count > PTRDIFF_MAX / sizeof(Element))
            throw std::bad_array_new_length();
        auto *elements =
            static_cast<Element *>(allocate(count * sizeof(Element), alignof(Element)));
        std::uninitialized_value_construct_n(elements, count);
        return elements;
    }

    // The pool as a resource of the standard library; its address stays right until the pool is
    // cleared or ends, wherever the Pool is moved.
    std::pmr::memory_resource *resource() {
        if (!resource_)
            resource_ = new (allocate(sizeof(Resource), alignof(Resource))) Resource(pool_);
        return resource_;
    }

    // The pool of the C functions, which stays this one's.
    operator apr_pool_t *() const noexcept { return pool_; }

    // The pool of the C functions, which stays this one's.
    apr_pool_t *get() const noexcept { return pool_; }

  private:
    class Resource final : public std::pmr::memory_resource {
      public:
        explicit Resource(apr_pool_t *pool) noexcept : pool_(pool) {}

      private:
        void *do_allocate(size_t bytes, size_t alignment) override {
            return claim(pool_, bytes, alignment);
        }
        void do_deallocate(void *, size_t, size_t) override {}
        bool do_is_equal(const std::pmr::memory_resource &other) const noexcept override {
            return this == &other;
        }

        apr_pool_t *pool_;
    };

    Pool(apr_pool_t *pool, Resource *resource) noexcept : pool_(pool), resource_(resource) {}

    kestu_error_t *open(apr_pool_t *parent) {
        const apr_status_t status = apr_pool_create_ex(&pool_, parent, nullptr, nullptr);
        if (status == APR_SUCCESS)
            return nullptr;
        pool_ = nullptr;
        return kestu_error_aprwrap_i(status, 0, nullptr, nullptr);
    }

    static void *claim(apr_pool_t *pool, size_t bytes, size_t alignment) {
        constexpr size_t given = 8; // what APR aligns to
        const size_t more = alignment > given ? alignment - given : 0;
        void *block = bytes <= PTRDIFF_MAX - more ? apr_palloc(pool, bytes + more) : nullptr;
        if (!block)
            throw std::bad_alloc();
        const auto address = reinterpret_cast<uintptr_t>(block);
        return static_cast<char *>(block) + (-address & (std::max(alignment, given) - 1));
    }

    template <typename T>
    static apr_status_t destroy(void *object) noexcept {
        static_cast<T *>(object)->~T();
        return APR_SUCCESS;
    }

    apr_pool_t *pool_ = nullptr;
    Resource *resource_ = nullptr; // in the pool
};

} // namespace KESTU_CPP
} // namespace kestu
