// Errors in tests: what a chain says, and expecting that there is none.
#pragma once

#include "kestu_error.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace kestu::test {

// One element: its code and its own message, or "" when it has none.
using Element = std::pair<int, std::string>;

// The elements of `err` from the head to the root cause; releases the chain.
std::vector<Element> take_chain(kestu_error_t *err);

// The lines that kestu_error_handle makes of `err`; releases the chain.
std::vector<std::string> take_lines(kestu_error_t *err);

// Matches a chain whose elements have one code and these messages, or just these elements.
template <typename... Messages>
auto chain_of(int code, const Messages &...messages) {
    return testing::ElementsAre(testing::Pair(code, messages)...);
}
template <typename... Elements>
auto chain_of(const Element &head, const Elements &...rest) {
    return testing::ElementsAre(head, rest...);
}

} // namespace kestu::test

// Expects that `expression` returns null; shows and releases the chain when it does not.
#define EXPECT_OK(expression)                                                                      \
    EXPECT_THAT(::kestu::test::take_lines(expression), ::testing::IsEmpty())
#define ASSERT_OK(expression)                                                                      \
    ASSERT_THAT(::kestu::test::take_lines(expression), ::testing::IsEmpty())

// Expects that `expression` fails with a code and its messages, or with just these elements, head
// first.
#define EXPECT_CHAIN(expression, ...)                                                              \
    EXPECT_THAT(::kestu::test::take_chain(expression), ::kestu::test::chain_of(__VA_ARGS__))
