// Links: what a handle knows and does, the order of slots, and what emissions tell of failures.
#include "kestu_link.h"

#include "support/alloc_failure.hpp"
#include "support/chain.hpp"
#include "support/pool.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace kestu::test;

namespace {

constexpr uint32_t ping = 100;

kestu_obj_t *make(const char *name = nullptr) {
    kestu_obj_t *obj = nullptr;
    EXPECT_OK(kestu_obj_create(&obj, name, kestu_pool));
    EXPECT_OK(kestu_obj_add_signal(obj, ping));
    return obj;
}

std::string called;

kestu_error_t *note(kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *) {
    called += static_cast<char *>(user);
    return nullptr;
}

kestu_error_t *refuse(kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *) {
    called += static_cast<char *>(user);
    return kestu_error_create(0, *static_cast<char *>(user), nullptr, "refused");
}

char a[] = "a", b[] = "b", c[] = "c", d[] = "d";

class Links : public testing::Test {
  protected:
    ~Links() override {
        for (kestu_obj_t *obj : {source, one, two})
            if (obj)
                kestu_obj_destroy(obj);
    }
    kestu_link_t *link(kestu_obj_t *destination, char *user, uint32_t flags = 0,
                       kestu_link_func fn = note) {
        kestu_link_t *made = nullptr;
        EXPECT_OK(kestu_obj_link(source, ping, destination, fn, user, flags, &made));
        handles.push_back(made);
        return made;
    }
    std::string emit() {
        called.clear();
        EXPECT_OK(kestu_obj_emit_signal(source, ping, nullptr));
        return called;
    }
    void release() {
        for (kestu_link_t *&handle : handles)
            kestu_link_release(&handle);
    }

    kestu_obj_t *source = make("source"), *one = make("one"), *two = make("two");
    std::vector<kestu_link_t *> handles;
};

TEST_F(Links, AreCalledInTheirRoundsAndEndOneByOne) {
    kestu_link_t *last = link(one, a, KESTU_LINK_LAST);
    kestu_link_t *plain = link(one, b), *same = link(one, b);
    link(two, c, KESTU_LINK_FIRST);
    EXPECT_OK(kestu_obj_link(source, ping, two, note, d, KESTU_LINK_ONCE, nullptr));
    EXPECT_EQ(emit(), "cbbda");
    EXPECT_EQ(emit(), "cbba");
    kestu_link_block(plain);
    EXPECT_EQ(emit(), "cba");
    kestu_link_unblock(plain);
    kestu_link_disconnect(same);
    EXPECT_EQ(emit(), "cba");
    EXPECT_TRUE(kestu_link_is_alive(plain));
    EXPECT_FALSE(kestu_link_is_alive(same));
    kestu_obj_disconnect_user(source, ping, c);
    kestu_obj_destroy(one);
    one = nullptr;
    EXPECT_EQ(emit(), "");
    EXPECT_FALSE(kestu_link_is_alive(last) || kestu_link_is_alive(plain));
    kestu_link_disconnect(last);
    release();
}

TEST_F(Links, ThatWaitForTheEndOfAnEmissionMayEndBefore) {
    static kestu_link_t *waiting[3];
    static char *const letters[] = {a, b, c};
    const auto change = [](kestu_obj_t *from, uint32_t code, kestu_obj_t *to, void *,
                           void *) -> kestu_error_t * {
        for (int i = 0; i < 3; ++i)
            EXPECT_OK(kestu_obj_link(from, code, to, note, letters[i], 0, &waiting[i]));
        kestu_link_disconnect(waiting[1]);
        EXPECT_FALSE(kestu_link_is_alive(waiting[1]));
        return nullptr;
    };
    link(one, d, KESTU_LINK_ONCE, change);
    EXPECT_EQ(emit(), "");
    EXPECT_EQ(emit(), "ac");
    for (kestu_link_t *&link : waiting)
        kestu_link_release(&link);
    release();
}

TEST_F(Links, TellWhatTheirSlotsFailedWith) {
    link(one, a);
    link(one, b, 0, refuse);
    link(two, c, 0, refuse);
    EXPECT_EQ(emit(), "abc");
    called.clear();
    EXPECT_CHAIN(kestu_obj_emit_collect(source, ping, nullptr), Element('c', "refused"),
                 Element('b', "refused"));
    EXPECT_EQ(called, "abc");
    called.clear();
    EXPECT_CHAIN(kestu_obj_emit_until_error(source, ping, nullptr), Element('b', "refused"));
    EXPECT_EQ(called, "ab");
    EXPECT_CHAIN(kestu_obj_emit_collect(source, 7, nullptr), Element(120104, "Cannot emit signal."),
                 Element(120104, "Cannot find signal with code 7."));
    kestu_link_t *none = nullptr;
    EXPECT_EQ(kestu_error_root_cause(kestu_obj_link(source, 7, one, note, a, 0, &none))->code,
              120104);
    EXPECT_EQ(none, nullptr);
    kestu_link_disconnect(none);
    EXPECT_FALSE(kestu_link_is_alive(none));
    release();
}

TEST_F(Links, AreRegisteredOnceUnderAName) {
    uint32_t first = 0, again = 0, other = 0;
    EXPECT_CHAIN(kestu_objsig_register_once(&first, "link test"),
                 Element(120001, "Cannot register signal."), Element(120001, ""));
    ASSERT_OK(kestu_obj_engine_init(kestu_pool));
    ASSERT_OK(kestu_objsig_register_once(&first, "link test"));
    ASSERT_OK(kestu_objsig_register_once(&again, "link test"));
    ASSERT_OK(kestu_objsig_register_once(&other, "another link test"));
    EXPECT_EQ(again, first);
    EXPECT_NE(other, first);
    ASSERT_OK(kestu_obj_engine_terminate());
}

// Objects that are linked, unlinked, destroyed and emit at random, from slots too. A link is alive
// until something ends it, whatever waits.
class Model {
  public:
    explicit Model(unsigned seed) : random_(seed) {
        for (int i = 0; i < 5; ++i)
            objects_.push_back(make());
    }
    ~Model() {
        for (kestu_obj_t *obj : objects_)
            if (obj)
                kestu_obj_destroy(obj);
        for (Known &known : links_) {
            EXPECT_FALSE(kestu_link_is_alive(known.link));
            kestu_link_release(&known.link);
        }
    }
    void step() {
        const size_t from = random_() % objects_.size(), to = random_() % objects_.size();
        switch (objects_[from] && objects_[to] ? random_() % 10 : 9) {
        case 0:
        case 1:
        case 2:
            return link(from, to);
        case 3:
            return end(random_() % (links_.size() + 1), false);
        case 4:
            return end(random_() % (links_.size() + 1), true);
        case 5:
            return destroy(from);
        case 6:
        case 7:
        case 8:
            return emit(from);
        default:
            if (!objects_[from])
                objects_[from] = make();
        }
    }
    void compare() const {
        for (const Known &known : links_)
            ASSERT_EQ(kestu_link_is_alive(known.link), known.is_alive);
    }

  private:
    struct Known {
        Model *model;
        size_t number, source, destination;
        bool is_once, is_alive;
        kestu_link_t *link;
    };

    static kestu_error_t *called(kestu_obj_t *, uint32_t, kestu_obj_t *, void *user, void *) {
        const auto number = reinterpret_cast<size_t>(user);
        Model &model = *running;
        EXPECT_TRUE(model.links_[number].is_alive);
        if (model.links_[number].is_once)
            model.links_[number].is_alive = false;
        if (model.depth_ < 3 && model.random_() % 3 == 0)
            model.step();
        return nullptr;
    }

    void link(size_t from, size_t to) {
        const uint32_t flags = random_() % 8;
        links_.push_back(
            {this, links_.size(), from, to, (flags & KESTU_LINK_ONCE) != 0, true, nullptr});
        Known &known = links_.back();
        EXPECT_OK(kestu_obj_link(objects_[from], ping, objects_[to], called,
                                 reinterpret_cast<void *>(known.number), flags, &known.link));
    }
    void end(size_t number, bool by_user) {
        if (number >= links_.size())
            return;
        Known &known = links_[number];
        if (!by_user)
            kestu_link_disconnect(known.link);
        else if (known.is_alive)
            kestu_obj_disconnect_user(objects_[known.source], 0xFFFFFFFF,
                                      reinterpret_cast<void *>(number));
        known.is_alive = false;
    }
    void destroy(size_t index) {
        kestu_obj_destroy(std::exchange(objects_[index], nullptr));
        for (Known &known : links_)
            if (known.source == index || known.destination == index)
                known.is_alive = false;
    }
    void emit(size_t index) {
        Model *const outer = std::exchange(running, this);
        ++depth_;
        kestu_error_clear(kestu_obj_emit_collect(objects_[index], ping, nullptr));
        --depth_;
        running = outer;
    }

    static inline Model *running = nullptr;
    std::mt19937 random_;
    std::vector<kestu_obj_t *> objects_;
    std::vector<Known> links_;
    int depth_ = 0;
};

TEST(LinkModel, HandlesKnowWhetherTheirLinkHasEnded) {
    long before = 0;
    for (unsigned seed = 0; seed < 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        if (seed == 10) // when what is kept between objects is there
            before = live_blocks();
        Model model(seed);
        for (int i = 0; i < 100; ++i)
            model.step();
        model.compare();
    }
    EXPECT_EQ(live_blocks(), before);
}

} // namespace
