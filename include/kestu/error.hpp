// Errors: chains as values and exceptions, or in what functions return.
//
//     try {
//         kestu::fail(KESTU_ERR_OPEN, "no such file");
//     } catch (kestu::Error &error) {
//         for (const kestu_error_t &element : error)
//             assert(element.code == KESTU_ERR_OPEN);
//         puts(error.what());           // Error(120030): no such file [main.cpp(2), main]
//     }
//     if (auto n = kestu::to_number<int>(std::nothrow, "42"))
//         assert(*n == 42);
//
// An Error owns its chain, which must not outlive the library (kestu::Library).
#pragma once

#include "base.hpp"
#include "callback.hpp"
#include "records.hpp"

#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include <apr_strings.h>
#ifdef __cpp_lib_expected
#include <expected>
#endif

namespace kestu {
inline namespace KESTU_CPP {

// Where an error is made: as a default argument, the line of the caller.
struct Place {
    int line;             // the line of the call
    const char *file;     // the source file of the call
    const char *function; // the function of the call

    // The place of the caller.
    static constexpr Place current(int line = __builtin_LINE(), const char *file = __builtin_FILE(),
                                   const char *function = __builtin_FUNCTION()) noexcept {
        return {line, file, function};
    }
};

// An error: a chain of elements, which it owns, from the outermost context to the root cause.
class Error final : public std::exception {
    struct Steps {
        using Place = const kestu_error_t *;
        static const kestu_error_t &show(Place element) { return *element; }
        static void next(Place &element) { element = element->child; }
        static const kestu_error_t *record(Place element) { return element; }
    };

  public:
    using iterator = detail::Iterator<Steps>; // stands at elements of the chain

    // Takes over a chain of the C functions.
    explicit Error(kestu_error_t *chain) noexcept : chain_(chain) {}

    // A new error without a cause. A null message: the text of the code is printed.
    explicit Error(int code, const char *message = nullptr, Place place = Place::current()) noexcept
        : chain_(kestu_error_create_i(KESTU_ERROR_ERROR, code, place.line, place.file,
                                      place.function, nullptr, message)) {}

    Error(Error &&other) noexcept
        : chain_(std::exchange(other.chain_, nullptr)), line_(std::exchange(other.line_, nullptr)) {
    }
    Error &operator=(Error &&other) noexcept {
        if (this != &other) {
            kestu_error_clear(chain_);
            chain_ = std::exchange(other.chain_, nullptr);
            line_ = std::exchange(other.line_, nullptr);
        }
        return *this;
    }
    ~Error() override {
        if (chain_)
            kestu_error_clear(chain_);
    }

    // The first line that print would print. Made when it is first asked for.
    const char *what() const noexcept override {
        if (!line_ && chain_ && chain_->pool) {
            First first{chain_->pool, nullptr};
            kestu_error_handle(chain_, keep_first, &first);
            line_ = first.line;
        }
        return line_ ? line_ : chain_ && chain_->message ? chain_->message : "no text";
    }

    // The code of the outermost element.
    int code() const noexcept { return chain_->code; }

    // The message of the outermost element; null when the text of its code stands for it.
    const char *message() const noexcept { return chain_->message; }

    // Whether an element of the chain has that code.
    bool has(int code) const noexcept { return kestu_error_is(chain_, code) != 0; }

    // The last element.
    const kestu_error_t &root_cause() const noexcept { return *kestu_error_root_cause(chain_); }

    // The outermost element.
    iterator begin() const noexcept { return iterator(chain_); }

    // Behind the root cause.
    iterator end() const noexcept { return iterator(); }

    // Prints a line an element.
    void print(std::FILE *stream = stderr) const {
        kestu_error_handle(chain_, kestu_error_stdhandler, stream);
    }

    // Calls `fn` with each of these lines, as a const char *.
    template <typename Function>
    void each_line(Function fn) const {
        const auto line = [&](const char *text) {
            fn(text);
            return 0;
        };
        detail::Carried carried(line);
        kestu_error_handle(chain_, carried.template callback<kestu_error_line_func>(), &carried);
        carried.rethrow();
    }

    // One JSON object on one line (kestu_error_to_json).
    std::string to_json() const {
        struct Scratch {
            apr_pool_t *pool = nullptr;
            ~Scratch() {
                if (pool)
                    apr_pool_destroy(pool);
            }
        } scratch;
        const char *json = nullptr;
        if (apr_pool_create_ex(&scratch.pool, chain_->pool, nullptr, nullptr) == APR_SUCCESS)
            json = kestu_error_to_json(chain_, scratch.pool);
        return json ? json : throw std::bad_alloc();
    }

    // Puts a message above the chain.
    Error wrap(const char *message, Place place = Place::current()) &&noexcept {
        return Error(
            kestu_error_quick_wrap_i(place.line, place.file, place.function, release(), message));
    }

    // Takes in another chain, below the root cause of this one.
    void append(Error &&cause) noexcept {
        kestu_error_compose(chain_, cause.release());
        line_ = nullptr;
    }

    // An independent copy of the chain.
    Error copy() const noexcept { return Error(kestu_error_dup(chain_)); }

    // The chain, which stays the error's.
    const kestu_error_t *get() const noexcept { return chain_; }

    // The chain, which is the caller's from then on.
    [[nodiscard]] kestu_error_t *release() noexcept {
        line_ = nullptr;
        return std::exchange(chain_, nullptr);
    }

  private:
    struct First {
        apr_pool_t *pool;
        const char *line;
    };
    static int keep_first(const char *line, void *baton) noexcept {
        auto *first = static_cast<First *>(baton);
        if (!first->line)
            first->line = apr_pstrdup(first->pool, line);
        return 0;
    }

    kestu_error_t *chain_; // null when it was moved from
    mutable const char *line_ = nullptr;
};

// What a function returns that does not throw: a value or an Error. std::expected<T, Error> where
// the compiler has it; the part of it that both have is what stands here.
#ifdef __cpp_lib_expected
template <typename T>
using Expected = std::expected<T, Error>;
using Unexpected = std::unexpected<Error>;
#else

// An error on its way into an Expected.
class Unexpected {
  public:
    // Takes over an error.
    explicit Unexpected(Error error) noexcept : chain_(error.release()) {}

    // Takes over a chain of the C functions.
    explicit Unexpected(kestu_error_t *chain) noexcept : chain_(chain) {}
    Unexpected(Unexpected &&other) noexcept : chain_(other.release()) {}
    Unexpected &operator=(Unexpected &&) = delete;
    ~Unexpected() {
        if (chain_)
            kestu_error_clear(chain_);
    }

    // The chain, which is the caller's from then on.
    kestu_error_t *release() noexcept { return std::exchange(chain_, nullptr); }

  private:
    kestu_error_t *chain_;
};

// A value or an Error.
template <typename T>
class [[nodiscard]] Expected {
  public:
    // Holds a value.
    Expected(T value) : result_(std::in_place_index<0>, std::move(value)) {}

    // Holds an error.
    Expected(Unexpected &&failure) noexcept : result_(std::in_place_index<1>, failure.release()) {}

    // Whether it holds a value.
    bool has_value() const noexcept { return result_.index() == 0; }

    // Whether it holds a value.
    explicit operator bool() const noexcept { return has_value(); }

    // The value, which must be there.
    T &operator*() &noexcept { return *std::get_if<0>(&result_); }

    // The value, which must be there.
    const T &operator*() const &noexcept { return *std::get_if<0>(&result_); }

    // The value, which must be there.
    T &&operator*() &&noexcept { return std::move(*std::get_if<0>(&result_)); }

    // The value; null when it holds an error.
    T *operator->() noexcept { return std::get_if<0>(&result_); }

    // The value; null when it holds an error.
    const T *operator->() const noexcept { return std::get_if<0>(&result_); }

    // The error, which must be there.
    Error &error() noexcept { return *std::get_if<1>(&result_); }

    // The error, which must be there.
    const Error &error() const noexcept { return *std::get_if<1>(&result_); }

    // The value, or `other`.
    template <typename Other>
    T value_or(Other &&other) && {
        return has_value() ? *std::move(*this) : static_cast<T>(std::forward<Other>(other));
    }

  private:
    std::variant<T, Error> result_;
};

// Nothing, or an Error.
template <>
class [[nodiscard]] Expected<void> {
  public:
    // Holds no error.
    Expected() noexcept = default;

    // Holds an error.
    Expected(Unexpected &&failure) noexcept : error_(std::in_place, failure.release()) {}

    // Whether it holds no error.
    bool has_value() const noexcept { return !error_; }

    // Whether it holds no error.
    explicit operator bool() const noexcept { return has_value(); }

    // Nothing: so that code for all types compiles.
    void operator*() const noexcept {}

    // The error, which must be there.
    Error &error() noexcept { return *error_; }

    // The error, which must be there.
    const Error &error() const noexcept { return *error_; }

  private:
    std::optional<Error> error_;
};
#endif

namespace detail {

// Apart, so that the way of success stays as short as in C.
[[noreturn, gnu::cold, gnu::noinline]] inline void raise(kestu_error_t *err) {
    throw Error(err);
}

// What the plain functions do with the error of a C call, and what those with std::nothrow do.
inline void check(kestu_error_t *err) {
    if (err) [[unlikely]]
        raise(err);
}
inline Unexpected failed(kestu_error_t *err) noexcept {
    return Unexpected(err);
}
inline Expected<void> outcome(kestu_error_t *err) noexcept {
    if (err)
        return failed(err);
    return {};
}

inline kestu_error_t *no_memory() noexcept {
    return kestu_error_create_i(KESTU_ERROR_ERROR, KESTU_ERR_NO_MEMORY, 0, nullptr, nullptr,
                                nullptr, nullptr);
}

} // namespace detail

// Throws a new error.
[[noreturn]] inline void fail(int code, const char *message = nullptr,
                              Place place = Place::current()) {
    throw Error(code, message, place);
}

// The value of `result`; its error is thrown.
template <typename T>
T take(Expected<T> &&result) {
    if (!result) [[unlikely]]
        throw std::move(result.error());
    return *std::move(result);
}

} // namespace KESTU_CPP
} // namespace kestu
