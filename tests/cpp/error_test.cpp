// Errors as values and exceptions.
#include "kestu.hpp"
#include "support/alloc_failure.hpp"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

static_assert(!std::is_copy_constructible_v<kestu::Error>);
static_assert(std::is_nothrow_move_constructible_v<kestu::Error>);
static_assert(std::forward_iterator<kestu::Error::iterator>);

kestu::Error chain_of_two() {
    return kestu::Error(KESTU_ERR_OPEN, "inner").wrap("outer");
}

std::vector<std::string> messages(const kestu::Error &error) {
    std::vector<std::string> found;
    for (const kestu_error_t &element : error)
        found.emplace_back(element.message ? element.message : "");
    return found;
}

TEST(CppError, OwnsAChainThatIsReadMovedWrappedAndJoined) {
    const long before = kestu::test::live_blocks();
    {
        kestu::Error error = chain_of_two();
        EXPECT_THAT(messages(error), ElementsAre("outer", "inner"));
        EXPECT_THAT(error.what(), StartsWith("Error(120030): outer [error_test.cpp("));
        EXPECT_EQ(error.what(), error.what());
        EXPECT_TRUE(error.has(KESTU_ERR_OPEN));
        EXPECT_FALSE(error.has(KESTU_ERR_READ));
        EXPECT_STREQ(error.root_cause().message, "inner");
        EXPECT_THAT(error.to_json(), HasSubstr(R"("message":"inner")"));

        std::vector<std::string> lines;
        error.each_line([&](const char *line) { lines.emplace_back(line); });
        EXPECT_EQ(lines.size(), 2);
        EXPECT_EQ(lines[0], error.what());

        kestu::Error copy = error.copy();
        error.append(kestu::Error(0, "last"));
        EXPECT_THAT(messages(error), ElementsAre("outer", "inner", "last"));
        copy = std::move(error);
        kestu::Error moved = std::move(copy);
        EXPECT_THAT(messages(moved), ElementsAre("outer", "inner", "last"));
        EXPECT_STREQ(copy.what(), "no text"); // NOLINT(bugprone-use-after-move)
        kestu_error_clear(moved.release());
    }
    EXPECT_EQ(kestu::test::live_blocks(), before);
}

TEST(CppError, IsThrownByPlainFunctionsAndReturnedByTheOthers) {
    try {
        kestu::to_number<double>("x");
        FAIL();
    } catch (const std::exception &error) {
        EXPECT_THAT(error.what(), HasSubstr("Cannot convert string 'x' to double"));
    }
    auto failed = kestu::to_number<double>(std::nothrow, "x");
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().code(), KESTU_ERR_DOUBLE_TEXT);
    EXPECT_THROW(take(std::move(failed)), kestu::Error);
    EXPECT_EQ(take(kestu::to_number<double>(std::nothrow, "2.5")), 2.5);
    EXPECT_EQ(kestu::to_number<int>(std::nothrow, "x").value_or(7), 7);
}

} // namespace
