// What the doubly linked lists of pools and of the heap have in common.
#include "fuzz/list_model.hpp"
#include "support/test.hpp"
#include "trace.hpp"

using namespace kestu::fuzz;
using namespace kestu::test;

namespace {

template <typename Kind>
class DlKinds : public testing::Test {
  protected:
    Kind f;
};
using Kinds = testing::Types<PoolList, HeapList>;
TYPED_TEST_SUITE(DlKinds, Kinds, );

} // namespace

TYPED_TEST(DlKinds, RandomStepsKeepOrderLinksAndHandles) {
    on_random_inputs(10, 3000, [](Input &input) { DlModel<TypeParam>(input).run(); });
}

// Each call shows the tag and where the handle stands.
TYPED_TEST(DlKinds, DestroyingGoesBackFromTheHandleAndThenOn) {
    kestu_dl_t *list = nullptr;
    for (uint32_t tag = 1; tag <= 5; ++tag)
        ASSERT_OK(this->f.add(last, &list, tag, &list, nullptr));
    list = list->next->next;
    Trace trace;
    const auto see_both = [](uint32_t tag, void *data, void *seen) {
        const kestu_dl_t *now = *static_cast<kestu_dl_t **>(data);
        see(10 * tag + (now ? now->tag : 0), nullptr, seen);
    };
    this->f.destroy_func(&list, see_both, &trace);
    EXPECT_EQ(list, nullptr);
    EXPECT_THAT(trace.seen, ElementsAre(23, 13, 34, 45, 50));
}

TYPED_TEST(DlKinds, RefusedNodesLeaveListHandleAndOutAlone) {
    constexpr const char *messages[] = {"Unable to add DL node.", "Unable to add DL node.",
                                        "Unable to prepend DL object.",
                                        "Unable to append DL object."};
    kestu_dl_t *list = nullptr, *none = nullptr, *out = nullptr;
    ASSERT_OK(this->f.add(last, &list, 1, nullptr, nullptr));
    kestu_dl_t *const held = list;
    for (const Where where : {after, before, first, last})
        for (kestu_dl_t **grown : {&list, &none}) {
            std::vector<Element> expected = {{120012, messages[where]}};
            if (TypeParam::node_error)
                expected.emplace_back(120012, TypeParam::node_error);
            expected.emplace_back(120012, "Failed to allocate 32 bytes of memory.");
            EXPECT_EQ(
                take_chain(without_memory(
                    this->f.pool, [&] { return this->f.add(where, grown, 2, nullptr, &out); })),
                expected);
        }
    EXPECT_EQ(list, held);
    EXPECT_THAT(checked_tags(list), ElementsAre(1));
    EXPECT_TRUE(!none && !out);
    this->f.drop(list);
}
