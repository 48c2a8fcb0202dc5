// Stacks.
//
//     kestu::Pool pool;
//     int one = 1, two = 2;
//     kestu::Stack<int> stack(pool);
//     stack.push(one);
//     stack.push(two);
//     assert(stack.top() == 2 && *stack.pop() == 2 && stack.size() == 1);
#pragma once

#include "../kestu_stk.h"
#include "error.hpp"

namespace kestu {
inline namespace KESTU_CPP {

// A stack whose elements live in a pool, which outlives it. Elements are walked from the top.
template <typename T>
class Stack {
    using Held = detail::Held<T>;
    struct Steps {
        using Place = kestu_sl_t *;
        static typename Held::Value &show(Place node) { return Held::value(node->data); }
        static void next(Place &node) { node = node->next; }
        static kestu_sl_t *record(Place node) { return node; }
    };

  public:
    using value_type = typename Held::Value; // what the elements are
    using Given = typename Held::Given;      // what goes in: T &, or std::unique_ptr where it owns
    using Taken = typename Held::Taken; // what comes out: T *, or std::unique_ptr where it owns
    using iterator = detail::Iterator<Steps>; // stands at elements
    using const_iterator = iterator; // the same: the elements are not the stack's to protect

    // Nothing yet; elements will be made in `pool`.
    explicit Stack(apr_pool_t *pool) noexcept : pool_(pool) {}
    Stack(Stack &&other) noexcept
        : pool_(other.pool_), stack_(std::exchange(other.stack_, kestu_stk_t{})) {}
    Stack &operator=(Stack &&other) noexcept {
        std::swap(pool_, other.pool_);
        std::swap(stack_, other.stack_);
        return *this;
    }
    ~Stack() { clear(); }

    // The top.
    iterator begin() const noexcept { return iterator(stack_.top); }

    // Below the last element.
    iterator end() const noexcept { return iterator(); }

    // Whether there is no element.
    bool empty() const noexcept { return !stack_.top; }

    // How many elements there are.
    uint64_t size() const noexcept { return stack_.count; }

    // The element on top, which must be there.
    value_type &top() const noexcept { return *begin(); }

    // Puts an element on top.
    void push(Given value, uint32_t tag = 0) { detail::check(put(value, tag)); }

    // As `push` above, but returns the error.
    Expected<void> push(std::nothrow_t, Given value, uint32_t tag = 0) {
        return detail::outcome(put(value, tag));
    }

    // Takes the top element and returns it; null when the stack is empty.
    Taken pop() { return Held::take(kestu_stk_pop(&stack_)); }

    // Removes all elements.
    void clear() {
        if constexpr (Held::is_owned)
            while (!empty())
                pop();
        kestu_stk_destroy(&stack_);
    }

    // The stack of the C functions, which stays this one's.
    kestu_stk_t *get() noexcept { return &stack_; }

  private:
    kestu_error_t *put(Given &value, uint32_t tag) {
        kestu_error_t *err = kestu_stk_push(&stack_, tag, Held::pointer(value), pool_);
        if (!err)
            Held::give_up(value);
        return err;
    }

    apr_pool_t *pool_;
    kestu_stk_t stack_{};
};

} // namespace KESTU_CPP
} // namespace kestu
