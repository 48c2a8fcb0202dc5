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
    using value_type = typename Held::Value;
    using Given = typename Held::Given;
    using Taken = typename Held::Taken;
    using iterator = detail::Iterator<Steps>;
    using const_iterator = iterator;

    explicit Stack(apr_pool_t *pool) noexcept : pool_(pool) {}
    Stack(Stack &&other) noexcept
        : pool_(other.pool_), stack_(std::exchange(other.stack_, kestu_stk_t{})) {}
    Stack &operator=(Stack &&other) noexcept {
        std::swap(pool_, other.pool_);
        std::swap(stack_, other.stack_);
        return *this;
    }
    ~Stack() { clear(); }

    iterator begin() const noexcept { return iterator(stack_.top); }
    iterator end() const noexcept { return iterator(); }
    bool empty() const noexcept { return !stack_.top; }
    uint64_t size() const noexcept { return stack_.count; }
    value_type &top() const noexcept { return *begin(); }

    void push(Given value, uint32_t tag = 0) { detail::check(put(value, tag)); }
    Expected<void> push(std::nothrow_t, Given value, uint32_t tag = 0) {
        return detail::outcome(put(value, tag));
    }

    // Null when the stack is empty.
    Taken pop() { return Held::take(kestu_stk_pop(&stack_)); }

    void clear() {
        if constexpr (Held::is_owned)
            while (!empty())
                pop();
        kestu_stk_destroy(&stack_);
    }

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
