// What may be done from many threads at once: making errors, and registering texts. Worth most
// under the thread sanitizer.
#include "kestu_error.h"
#include "kestu_lib.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int thread_count = 4;
constexpr int rounds = 500;

template <typename Work>
void on_many_threads(Work work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < thread_count; ++number)
        threads.emplace_back(work, number);
    for (std::thread &thread : threads)
        thread.join();
}

class Threads : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(kestu_initialize(), KESTU_INIT_OK); }
    void TearDown() override { kestu_terminate(); }
};

} // namespace

TEST_F(Threads, MakeAndReleaseErrorsAtOnce) {
    on_many_threads([](int number) {
        for (int i = 0; i < rounds; ++i) {
            kestu_error_t *err = kestu_error_createf(0, i, nullptr, "%d of thread %d", i, number);
            err = kestu_error_quick_wrap(err, "Cannot go on.");
            kestu_error_t *copy = kestu_error_dup(err);
            kestu_error_compose(err, copy);
            EXPECT_EQ(kestu_error_root_cause(err)->code, i);
            kestu_error_clear(err);
        }
    });
}

TEST_F(Threads, RegisterTextsAtOnceWithoutSharingACode) {
    std::vector<std::set<int>> codes(thread_count);
    on_many_threads([&](int number) {
        for (int i = 0; i < rounds; ++i) {
            int code = 0;
            EXPECT_EQ(kestu_error_register(&code, std::to_string(number).c_str()), nullptr);
            if (i % 2 == 0)
                EXPECT_EQ(kestu_error_deregister(code), nullptr);
            else
                EXPECT_TRUE(codes[static_cast<size_t>(number)].insert(code).second);
        }
    });
    std::set<int> all;
    for (const std::set<int> &some : codes)
        all.insert(some.begin(), some.end());
    EXPECT_EQ(all.size(), size_t{thread_count * rounds / 2});
}
