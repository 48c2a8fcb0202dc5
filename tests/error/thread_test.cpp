// What may be done from many threads at once: making errors, and registering texts, types of
// objects and signal types. Worth most under the thread sanitizer.
#include "support/test.hpp"

#include <thread>

namespace {

constexpr int thread_count = 4;
constexpr int rounds = 500;
constexpr unsigned type_codes = 1 << 20; // tells the codes of types from those of signal types

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
    void SetUp() override {
        ASSERT_EQ(kestu_initialize(), KESTU_INIT_OK);
        ASSERT_EQ(kestu_obj_engine_init(kestu_pool), nullptr);
    }
    void TearDown() override {
        EXPECT_EQ(kestu_obj_engine_terminate(), nullptr);
        kestu_terminate();
    }
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

// Has every thread take codes and, where that can be done, give every other one back: no code may
// be handed out twice.
void register_at_once(kestu_error_t *(*take)(int number, int round, unsigned *code),
                      kestu_error_t *(*give_back)(unsigned code)) {
    std::vector<std::set<unsigned>> codes(thread_count);
    on_many_threads([&](int number) {
        for (int i = 0; i < rounds; ++i) {
            unsigned code = 0;
            EXPECT_EQ(take(number, i, &code), nullptr);
            EXPECT_TRUE(codes[static_cast<size_t>(number)].insert(code).second || give_back);
            if (give_back && i % 2 == 0) {
                EXPECT_EQ(give_back(code), nullptr);
                codes[static_cast<size_t>(number)].erase(code);
            }
        }
    });
    std::set<unsigned> all;
    for (const std::set<unsigned> &some : codes)
        all.insert(some.begin(), some.end());
    EXPECT_EQ(all.size(), size_t{thread_count * rounds} / (give_back ? 2 : 1));
}

TEST_F(Threads, RegisterTextsAtOnceWithoutSharingACode) {
    register_at_once(
        [](int number, int, unsigned *code) {
            return kestu_error_register(reinterpret_cast<int *>(code),
                                        std::to_string(number).c_str());
        },
        [](unsigned code) { return kestu_error_deregister(static_cast<int>(code)); });
}

// Types and signal types have a lock each: even threads take the one, odd threads the other.
TEST_F(Threads, RegisterTypesOfObjectsAndOfSignalsAtOnceWithoutSharingACode) {
    register_at_once(
        [](int number, int round, unsigned *code) {
            const std::string name = std::to_string(number) + "." + std::to_string(round);
            if (number % 2 == 0)
                return kestu_objsig_register(code, name.c_str());
            apr_pool_t *pool = nullptr;
            kestu_strlist_t *names = nullptr;
            EXPECT_EQ(apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr), APR_SUCCESS);
            EXPECT_EQ(kestu_strlist_create(&names, pool), nullptr);
            EXPECT_EQ(kestu_strlist_addlast(names, name.c_str(), pool), nullptr);
            kestu_error_t *err = kestu_objtype_register(code, names, nullptr);
            *code += type_codes;
            apr_pool_destroy(pool);
            return err;
        },
        nullptr);
}

TEST_F(Threads, RegisterSignalTypesAtOnceWithoutSharingACode) {
    register_at_once([](int, int, unsigned *code) { return kestu_objsig_register(code, nullptr); },
                     kestu_objsig_deregister);
}
