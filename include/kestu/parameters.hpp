// Parameters: lines of text split into integers, floating-point numbers and strings.
//
//     kestu::Pool pool;
//     kestu::Parameters line(pool);
//     line.parse("scale 2.5 'a b' \"a b\"");
//     for (const kestu_prsd_param_t &parameter : line)
//         assert(parameter.type != KESTU_PRSD_INT);
//     assert(line.size() == 5 && line.text(0) == "scale" && std::get<double>(line[1]) == 2.5);
#pragma once

#include "../kestu_prsd.h"
#include "error.hpp"

#include <string_view>
#include <variant>

namespace kestu {
inline namespace KESTU_CPP {

// A parameter: what it was taken for.
using Parameter = std::variant<int, double, std::string_view>;

// The parameters found so far, which live in a pool.
class Parameters {
  public:
    // None yet; those that come live in `pool`.
    explicit Parameters(apr_pool_t *pool) noexcept : pool_(pool) {}

    // Adds the parameters of a line, as kestu_prsd_parse_p does.
    void parse(CString line, CString separators = " \t\n") {
        detail::check(kestu_prsd_parse_p(&prsd_, line, separators, pool_));
    }

    // As `parse` above, but returns the error.
    Expected<void> parse(std::nothrow_t, CString line, CString separators = " \t\n") {
        return detail::outcome(kestu_prsd_parse_p(&prsd_, line, separators, pool_));
    }

    // Whether what was parsed ends with a backslash that asks for another line.
    bool is_incomplete() const { return kestu_prsd_incomplete(&prsd_) != 0; }

    // How many parameters there are.
    size_t size() const noexcept { return static_cast<size_t>(prsd_.n); }

    // Whether there is none.
    bool empty() const noexcept { return prsd_.n == 0; }

    // The first one as the C functions have it.
    const kestu_prsd_param_t *begin() const noexcept { return prsd_.params; }

    // Behind the last one.
    const kestu_prsd_param_t *end() const noexcept { return prsd_.params + prsd_.n; }

    // Parameter number `n`, from 0.
    Parameter operator[](size_t n) const noexcept {
        const kestu_prsd_param_t &parameter = prsd_.params[n];
        return parameter.type == KESTU_PRSD_INT      ? Parameter(parameter.i)
               : parameter.type == KESTU_PRSD_DOUBLE ? Parameter(parameter.d)
                                                     : Parameter(std::string_view(parameter.s));
    }

    // Parameter number `n`, from 0, as it stood in the text.
    std::string_view text(size_t n) const { return kestu_prsd_text(&prsd_, static_cast<int>(n)); }

    // Whether parameter number `n` stood in quotes.
    bool is_quoted(size_t n) const {
        return kestu_prsd_is_quoted(&prsd_, static_cast<int>(n)) != 0;
    }

    // Forgets all; the memory goes with the pool.
    void clear() { kestu_prsd_clear_p(&prsd_); }

    // The record, which stays this one's.
    kestu_prsd_t *get() noexcept { return &prsd_; }

  private:
    apr_pool_t *pool_;
    kestu_prsd_t prsd_{};
};

} // namespace KESTU_CPP
} // namespace kestu
