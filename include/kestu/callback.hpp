// How callables and what they throw pass through C functions that call back.
//
// No exception may leave a callback, since the C functions between it and the caller are not made
// for that. What is thrown is caught at the edge, carried, and thrown again when the C function has
// returned; meanwhile nothing is called any more, and results that end a walk end it.
#pragma once

#include "base.hpp"

#include <cstddef>
#include <exception>
#include <tuple>
#include <type_traits>
#include <utility>

namespace kestu {
inline namespace KESTU_CPP {
namespace detail {

// What a callback returns so that its caller stops.
template <typename Result>
Result stop() noexcept {
    if constexpr (std::is_same_v<Result, kestu_error_t *>)
        return KestuDLlistStopWalking;
    else if constexpr (!std::is_void_v<Result>)
        return Result(1);
}

// An exception on its way through C functions.
class Thrown {
  public:
    // The result of `call`, or that which stops when it throws or something was thrown before.
    template <typename Result, typename Call>
    Result run(Call call) noexcept {
        if constexpr (noexcept(call())) {
            return call();
        } else {
            if (thrown_) [[unlikely]]
                return stop<Result>();
            try {
                return call();
            } catch (...) {
                thrown_ = std::current_exception();
                return stop<Result>();
            }
        }
    }

    void rethrow() {
        if (thrown_) [[unlikely]]
            std::rethrow_exception(std::exchange(thrown_, nullptr));
    }

    explicit operator bool() const noexcept { return thrown_ != nullptr; }

  private:
    std::exception_ptr thrown_;
};

constexpr size_t last_argument = static_cast<size_t>(-1);

// A callable on its way through a C function, which takes callback() and the address of this object
// as the baton. The callable receives what the callback does, without the baton.
template <typename Function>
class Carried : public Thrown {
  public:
    explicit Carried(Function &fn) noexcept : fn_(fn) {}
    Carried(const Carried &) = delete;
    Carried &operator=(const Carried &) = delete;

    // The callback, whose argument number `at` is the baton.
    template <typename Callback, size_t at = last_argument>
    static Callback callback() noexcept {
        return callback_of<at>(static_cast<Callback>(nullptr));
    }

  private:
    template <size_t at, typename Result, typename... Arguments>
    static auto callback_of(Result (*)(Arguments...)) noexcept {
        constexpr size_t place = at == last_argument ? sizeof...(Arguments) - 1 : at;
        return &trampoline<place, Result, Arguments...>;
    }

    template <size_t at, typename Result, typename... Arguments>
    static Result trampoline(Arguments... arguments) {
        const auto all = std::tie(arguments...);
        auto &self = *static_cast<Carried *>(std::get<at>(all));
        return self.template pass<Result>(
            all, std::make_index_sequence<at>(),
            std::make_index_sequence<sizeof...(Arguments) - at - 1>());
    }

    template <typename Result, typename All, size_t... before, size_t... behind>
    Result pass(const All &all, std::index_sequence<before...>, std::index_sequence<behind...>) {
        constexpr size_t next = sizeof...(before) + 1;
        return run<Result>([&]() noexcept(noexcept(
                               fn_(std::get<before>(all)..., std::get<next + behind>(all)...))) {
            return static_cast<Result>(
                fn_(std::get<before>(all)..., std::get<next + behind>(all)...));
        });
    }

    Function &fn_;
};

} // namespace detail
} // namespace KESTU_CPP
} // namespace kestu
