// Types, objects, children and cleanups.
#include "support/small_stack.hpp"
#include "support/test.hpp"

#include <sys/wait.h>

using namespace kestu::test;

namespace {

std::vector<std::string> events;

class ObjectTest : public testing::Test {
  protected:
    void SetUp() override {
        events.clear();
        ASSERT_OK(kestu_obj_engine_init(pool));
    }
    void TearDown() override { ASSERT_OK(kestu_obj_engine_terminate()); }

    kestu_obj_t *create(const char *name, apr_pool_t *where = nullptr) {
        kestu_obj_t *obj = nullptr;
        EXPECT_OK(kestu_obj_create(&obj, name, where ? where : pool));
        EXPECT_OK(kestu_obj_cleanup_register(obj, tell, nullptr));
        return obj;
    }

    kestu_obj_t *create_child(kestu_obj_t *parent, const char *name) {
        kestu_obj_t *child = create(name);
        EXPECT_OK(kestu_obj_addc(parent, child));
        return child;
    }

    kestu_strlist_t *names(std::initializer_list<const char *> list) {
        kestu_strlist_t *result = nullptr;
        EXPECT_OK(kestu_strlist_create(&result, pool));
        for (const char *name : list)
            EXPECT_OK(kestu_strlist_addlast(result, name, pool));
        return result;
    }

    static void tell(kestu_obj_t *obj, void *what) {
        const char *name = kestu_obj_get_name(obj);
        events.emplace_back(what ? static_cast<const char *>(what) : name ? name : "-");
    }

    Pool pool;
};

// The names of the children as a walk finds them.
std::string children_of(kestu_obj_t *obj) {
    const auto add = [](uint32_t, void *child, void *text) -> kestu_error_t * {
        const char *name = child ? kestu_obj_get_name(static_cast<kestu_obj_t *>(child)) : "*";
        static_cast<std::string *>(text)->append(name ? name : "-");
        return nullptr;
    };
    std::string text;
    EXPECT_OK(kestu_obj_child_walk_err_first(obj, add, nullptr, &text));
    return text;
}

int is_object(uint32_t, void *child, void *wanted) {
    return child == wanted;
}

// A lock that is held cannot be destroyed.
bool is_refused_with_the_lock_held(const std::function<kestu_error_t *()> &attempt,
                                   const std::vector<Element> &chain) {
    const pid_t child = fork();
    if (child == 0) {
        const bool refused = take_chain(attempt()) == chain;
        kestu_error_t *err = kestu_obj_engine_terminate();
        _exit(refused && err &&
                      err->message == std::string("Cannot terminate OBJECT engine correctly.")
                  ? 0
                  : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
}

} // namespace

TEST_F(ObjectTest, TypesGetCodesAndCreateObjectsByAnyOfTheirNames) {
    uint32_t first = 0;
    uint32_t second = 0;
    ASSERT_OK(kestu_objtype_register(&first, names({"button", "knob"}), nullptr));
    const auto refuse = [](const char *, kestu_obj_t **, apr_pool_t *) {
        return kestu_error_create(0, 7, nullptr, "refused");
    };
    ASSERT_OK(kestu_objtype_register(&second, names({"never"}), refuse));
    EXPECT_EQ(second, first + 1);
    EXPECT_EQ(kestu_objtype_query_typecode("knob"), first);
    EXPECT_EQ(kestu_objtype_query_typecode("kno"), 0u);
    EXPECT_TRUE(kestu_objtype_is_names_exist(names({"a", "never"})));
    EXPECT_FALSE(kestu_objtype_is_names_exist(names({})));

    kestu_obj_t *obj = nullptr;
    ASSERT_OK(kestu_objtype_create_object("knob", "volume", &obj, pool));
    EXPECT_STREQ(kestu_obj_get_name(obj), "volume");
    EXPECT_EQ(kestu_obj_get_type(obj), 0u);
    kestu_obj_destroy(obj);
    EXPECT_CHAIN(kestu_objtype_create_object("never", "x", &obj, pool), 7, "Cannot create object.",
                 "refused");
    EXPECT_CHAIN(kestu_objtype_create_object("lever", "x", &obj, pool), 0,
                 "Cannot create object. Type [lever] is not registered.");
}

// In a process of its own, as the lock stays held.
TEST_F(ObjectTest, ANameThatIsTakenLeavesTheRegistryLocked) {
    uint32_t code = 0, next = 77;
    ASSERT_OK(kestu_objtype_register(&code, names({"a"}), nullptr));
    ASSERT_OK(kestu_objsig_register(&code, "a"));
    const auto type = [&] { return kestu_objtype_register(&next, names({"b", "a"}), nullptr); };
    const auto signal = [&] { return kestu_objsig_register(&next, "a"); };
    EXPECT_TRUE(is_refused_with_the_lock_held(type, {{120101, ""}}));
    EXPECT_TRUE(is_refused_with_the_lock_held(
        signal,
        {{120103, "Cannot register signal."}, {120103, "Object signal type [a] already exists."}}));
    EXPECT_EQ(next, 77u);
}

TEST_F(ObjectTest, TheEngineStopsWithItsPoolAndItsCodesCountOn) {
    ASSERT_OK(kestu_obj_engine_terminate());
    uint32_t before = 0, after = 0;
    {
        Pool own;
        ASSERT_OK(kestu_obj_engine_init(own));
        ASSERT_OK(kestu_objtype_register(&before, names({"a"}), nullptr));
    }
    EXPECT_EQ(kestu_objtype_query_typecode("a"), 0u);
    EXPECT_EQ(kestu_objtype_query_typecode(nullptr), 0u);
    EXPECT_CHAIN(kestu_objtype_register(&after, names({"a"}), nullptr), 120001,
                 "Cannot register object type.", "");
    ASSERT_OK(kestu_obj_engine_terminate());
    ASSERT_OK(kestu_obj_engine_init(pool));
    ASSERT_OK(kestu_objtype_register(&after, names({"a"}), nullptr));
    EXPECT_EQ(after, before + 1);
}

TEST_F(ObjectTest, CarriesNameTypeAndDatumInAPoolOfItsOwn) {
    kestu_obj_t *obj = create("old");
    int datum = 0;
    EXPECT_EQ(kestu_obj_set_name(obj, "new"), nullptr);
    EXPECT_EQ(kestu_obj_set_type(obj, 9), nullptr);
    EXPECT_EQ(kestu_obj_set_data(obj, &datum), nullptr);
    EXPECT_STREQ(kestu_obj_get_name(obj), "new");
    EXPECT_EQ(kestu_obj_get_type(obj), 9u);
    EXPECT_EQ(kestu_obj_get_data(obj), &datum);
    EXPECT_NE(kestu_obj_get_pool(obj), static_cast<apr_pool_t *>(pool));
    EXPECT_TRUE(apr_pool_is_ancestor(pool, kestu_obj_get_pool(obj)));
    kestu_obj_destroy(obj);
}

TEST_F(ObjectTest, ChildrenAreFoundByNameAndKeptInOrder) {
    const Element taken(120102, "Cannot add child to object");
    kestu_obj_t *parent = create("p"), *a = create_child(parent, "a");
    kestu_obj_t *none = create_child(parent, nullptr), *b = create_child(parent, "b");
    kestu_obj_t *twin = create("a");
    EXPECT_EQ(children_of(parent), "*a-b");
    EXPECT_EQ(kestu_obj_getc(parent, "b"), b);
    EXPECT_EQ(kestu_obj_getc(parent, nullptr), nullptr);
    EXPECT_CHAIN(kestu_obj_addc(parent, twin), taken,
                 Element(120102, "There is already a child with name 'a'"));
    EXPECT_EQ(twin->parent, nullptr);
    EXPECT_EQ(kestu_obj_removec(parent, "a", nullptr), a);
    EXPECT_EQ(a->parent, parent) << "the link to the parent stays";
    EXPECT_EQ(kestu_obj_removec(parent, "a", nullptr), nullptr);
    for (int i = 0; i < 2; ++i) // the second time, it is no child any more
        EXPECT_EQ(kestu_obj_removec(parent, nullptr, none), none);
    EXPECT_EQ(kestu_obj_removec(parent, nullptr, nullptr), nullptr);
    EXPECT_OK(kestu_obj_addc(parent, twin));
    // What a predicate removes keeps its name taken, until it is given back or dies.
    EXPECT_EQ(kestu_obj_removec_func(parent, is_object, parent), nullptr);
    EXPECT_EQ(kestu_obj_removec_func(parent, is_object, b), b);
    EXPECT_EQ(kestu_obj_getc(parent, "b"), nullptr);
    EXPECT_CHAIN(kestu_obj_addc(parent, b), taken,
                 Element(120102, "There is already a child with name 'b'"));
    EXPECT_EQ(kestu_obj_removec(parent, "b", nullptr), nullptr);
    EXPECT_OK(kestu_obj_addc(parent, b));
    EXPECT_EQ(children_of(parent), "*ab");
    EXPECT_EQ(kestu_obj_removec_func(parent, is_object, twin), twin);
    kestu_obj_destroy(twin);
    EXPECT_OK(kestu_obj_addc(parent, a));
    kestu_obj_set_name(b, "a");
    kestu_obj_destroy(b);
    EXPECT_EQ(kestu_obj_getc(parent, "a"), a) << "a namesake is left alone";
    kestu_obj_destroy(parent);
    EXPECT_THAT(events, ElementsAre("a", "a", "p", "a"));
    kestu_obj_destroy(none);
}

TEST_F(ObjectTest, WalkSeesTheNodeAboveTheChildrenAndWrapsWhatEndsIt) {
    kestu_obj_t *parent = create("p");
    kestu_obj_t *child = create("c");
    kestu_obj_set_type(child, 5);
    ASSERT_OK(kestu_obj_addc(parent, child));
    const auto tell_pre = [](uint32_t tag, void *, void *) -> kestu_error_t * {
        events.push_back("pre " + std::to_string(tag));
        return nullptr;
    };
    const auto stop_post = [](uint32_t tag, void *, void *) -> kestu_error_t * {
        events.push_back("post " + std::to_string(tag));
        return tag == 0 ? KestuDLlistStopWalking : nullptr;
    };
    kestu_error_t *err = kestu_obj_child_walk_err_first(parent, tell_pre, stop_post, nullptr);
    EXPECT_EQ(err->child, KestuDLlistStopWalking);
    EXPECT_STREQ(err->message, "Cannot walk objects childs");
    kestu_error_clear(err);
    EXPECT_STREQ(KestuDLlistStopWalking->message, "KestuDLlistStopWalking") << "still there";
    EXPECT_THAT(events, ElementsAre("pre 0", "pre 5", "post 5", "post 0"));
    kestu_obj_destroy(parent);
}

TEST_F(ObjectTest, CleanupsRunTheFirstAndThenFromTheLatestBack) {
    kestu_obj_t *obj = nullptr;
    ASSERT_OK(kestu_obj_create(&obj, "x", pool));
    static char f1[] = "f1", f2[] = "f2", f3[] = "f3", other[] = "other";
    const auto tell_other = [](kestu_obj_t *, void *what) {
        events.emplace_back(static_cast<char *>(what));
    };
    ASSERT_OK(kestu_obj_cleanup_register(obj, tell, f1));
    ASSERT_OK(kestu_obj_cleanup_register(obj, tell, f2));
    ASSERT_OK(kestu_obj_cleanup_register(obj, tell_other, other));
    ASSERT_OK(kestu_obj_cleanup_register(obj, tell, f3));
    ASSERT_OK(kestu_obj_cleanup_register(obj, nullptr, nullptr));
    kestu_obj_cleanup_deregister(obj, tell_other);
    kestu_obj_cleanup_deregister(obj, tell_other);
    kestu_obj_destroy(obj);
    EXPECT_THAT(events, ElementsAre("f1", "f3", "f2"));
}

TEST_F(ObjectTest, DestroyingAParentDestroysItsFamilyTopFirst) {
    kestu_obj_t *top = create("top"), *b = create("b");
    ASSERT_OK(kestu_obj_addc(top, create("a", kestu_obj_get_pool(top))));
    ASSERT_OK(kestu_obj_addc(top, b));
    ASSERT_OK(kestu_obj_addc(b, create("c")));
    kestu_obj_destroy(top);
    EXPECT_THAT(events, ElementsAre("top", "a", "b", "c"));
}

TEST_F(ObjectTest, AddingAChildWithoutMemoryChangesNothing) {
    kestu_obj_t *parent = create("p");
    kestu_obj_t *child = create("child with a name");
    const long blocks = live_blocks();
    const size_t failures = fail_each_allocation([&](size_t) {
        if (kestu_error_t *err = kestu_obj_addc(parent, child)) {
            EXPECT_STREQ(err->message, "Cannot add child to object");
            EXPECT_EQ(child->parent, nullptr);
            EXPECT_EQ(live_blocks(), blocks);
            kestu_error_clear(err);
        }
    });
    EXPECT_GE(failures, 2u);
    EXPECT_EQ(children_of(parent), "*child with a name");
    kestu_obj_destroy(parent);
}

TEST_F(ObjectTest, ANameWithoutMemoryIsAnErrorOrStaysAsItWas) {
    kestu_obj_t *obj = create("old"), *half = nullptr;
    kestu_obj_destroy(create("x")); // leaves room for the next object, but not for this name:
    const std::string name(10'000'000, 'x');
    kestu_error_t *err = nullptr;
    {
        AllocFailure failure(1, pools_too);
        err = kestu_obj_create(&half, name.c_str(), pool);
    }
    EXPECT_CHAIN(err, 120012, "Cannot create object.", "");
    ASSERT_NE(half, nullptr);
    kestu_obj_destroy(half);
    const auto rename = [&] {
        errno = 77;
        return kestu_obj_set_name(obj, name.c_str());
    };
    EXPECT_EQ(pool.without_memory(rename), nullptr);
    EXPECT_STREQ(kestu_obj_get_name(obj), "old");
    EXPECT_EQ(errno, 77);
    kestu_obj_destroy(obj);
}

// On a stack that recursion, of this library or of APR, would overflow.
TEST_F(ObjectTest, AFamilyOfAnyDepthIsDestroyed) {
    constexpr int members = 20'000;
    static int destroyed;
    const auto count = [](kestu_obj_t *, void *) { ++destroyed; };
    for (const unsigned kind : {0u, 1u, 2u, 3u, 5u, 6u, 7u}) {
        const bool adopted = kind & 1, nested = kind & 2, by_object = kind & 4;
        SCOPED_TRACE(kind);
        Pool own;
        kestu_obj_t *top = nullptr, *last = nullptr;
        destroyed = 0;
        for (int i = 0; i < members; ++i) {
            kestu_obj_t *obj = nullptr;
            ASSERT_OK(kestu_obj_create(&obj, nullptr, nested && last ? last->pool : own));
            ASSERT_OK(kestu_obj_cleanup_register(obj, count, nullptr));
            if (adopted && last) {
                ASSERT_OK(kestu_obj_addc(last, obj));
            }
            last = obj;
            top = top ? top : obj;
        }
        run_on_small_stack([&] { by_object ? kestu_obj_destroy(top) : apr_pool_clear(own); });
        EXPECT_EQ(destroyed, members);
    }
}
