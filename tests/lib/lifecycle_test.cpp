// Start and stop of the library, which these tests do themselves.
#include "support/test.hpp"

TEST(Lifecycle, CallsAreCountedAndTheLastOneStops) {
    EXPECT_EQ(KestuInitialized, 0);
    EXPECT_EQ(kestu_initialize(), KESTU_INIT_OK);
    EXPECT_EQ(kestu_initialize(), KESTU_INIT_OK);
    EXPECT_EQ(KestuInitialized, 2);
    kestu_terminate();
    ASSERT_NE(KestuDLlistStopWalking, nullptr);
    EXPECT_STREQ(KestuDLlistStopWalking->message, "KestuDLlistStopWalking");
    EXPECT_EQ(KestuDLlistStopWalking->code, 0);
    EXPECT_EQ(KestuDLlistStopWalking->child, nullptr);
    kestu_error_clear(kestu_error_create(0, 1, nullptr, "usable"));
    kestu_terminate();
    EXPECT_EQ(KestuInitialized, 0);
}

TEST(Lifecycle, CanBeStartedAgain) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(kestu_initialize(), KESTU_INIT_OK);
        int code = 0;
        EXPECT_EQ(kestu_error_register(&code, "text"), nullptr);
        EXPECT_EQ(code, KESTU_ERROR_FIRST_REGISTERED);
        kestu_terminate();
    }
}

// The allocations behind that of the error subsystem's pool are made by errors, which never fail.
TEST(Lifecycle, AFailedStartCanBeTakenBack) {
    std::set<int> statuses;
    for (size_t n = 1; statuses.count(KESTU_INIT_ERROR_FAILED) == 0; ++n) {
        {
            kestu::test::AllocFailure failure(n, kestu::test::pools_too);
            statuses.insert(kestu_initialize());
        }
        kestu_terminate();
        EXPECT_EQ(KestuInitialized, 0);
    }
    EXPECT_THAT(statuses, testing::ElementsAre(KESTU_INIT_APR_FAILED, KESTU_INIT_POOL_FAILED,
                                               KESTU_INIT_ERROR_FAILED));
}

// The count goes below zero and the next start only brings it back: kept for programs that count on
// it.
TEST(Lifecycle, StoppingFirstSpoilsTheNextStart) {
    kestu_terminate();
    EXPECT_EQ(KestuInitialized, -1);
    EXPECT_EQ(kestu_initialize(), KESTU_INIT_OK);
    EXPECT_EQ(KestuInitialized, 0);
}

TEST(Lifecycle, TheVersionIsToldWithoutAStart) {
    EXPECT_EQ(kestu_version_major(), 1);
    EXPECT_EQ(kestu_version_minor(), 0);
    EXPECT_EQ(kestu_version_patch(), 0);
    EXPECT_STREQ(kestu_version_string(), "1.0.0");
    EXPECT_EQ(kestu_version_string(), kestu_version_string());
}
