// The library's life as an object: errors that leave its scope can still be read.
#include "kestu.hpp"

#include <gmock/gmock.h>

namespace {

TEST(Library, AnErrorThatLeavesItsScopeIsStillThere) {
    for (int round = 0; round < 2; ++round) {
        std::exception_ptr kept;
        try {
            const kestu::Library library;
            kestu::fail(KESTU_ERR_OPEN, "far away");
        } catch (...) {
            kept = std::current_exception();
        }
        try {
            std::rethrow_exception(kept);
        } catch (const kestu::Error &error) {
            EXPECT_STREQ(error.message(), "far away");
            EXPECT_THAT(error.what(), testing::StartsWith("Error(120030): far away [life_test"));
        }
    }
    EXPECT_EQ(KestuInitialized, 2); // taken back at the exit
    { const kestu::Library library; }
    EXPECT_EQ(KestuInitialized, 2);
}

} // namespace
