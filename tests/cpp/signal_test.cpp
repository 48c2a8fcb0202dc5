// Typed signals: what slots receive, and how long they live.
#include "kestu.hpp"
#include "support/alloc_failure.hpp"

#include <gmock/gmock.h>

#include <random>

namespace {

using kestu::Connection;
using kestu::Object;
using kestu::UniqueObject;
using testing::ElementsAre;

class CppSignal : public testing::Test {
  protected:
    kestu::ObjectEngine engine_;
};

// A callable that counts those alive, and keeps what it captures on the heap.
struct Counter {
    static inline int alive = 0;
    std::shared_ptr<int> calls;
    explicit Counter(std::shared_ptr<int> shared) : calls(std::move(shared)) { ++alive; }
    Counter(const Counter &other) : calls(other.calls) { ++alive; }
    Counter &operator=(const Counter &) = delete;
    ~Counter() { --alive; }
    void operator()() const { ++*calls; }
};

struct Window {
    std::vector<std::string> seen;
    void on_click(int x, std::string_view which) {
        seen.push_back(std::to_string(x) + std::string(which));
    }
};

TEST_F(CppSignal, CallsLambdasAndMembersWithTheArguments) {
    UniqueObject button("button");
    const kestu::Signal<void(int, std::string_view)> clicked(button, "typed click");
    Window window;
    clicked.connect(button, window, &Window::on_click);
    int sum = 0;
    {
        kestu::ScopedConnection adds = clicked.connect([&](int x, std::string_view) { sum += x; });
        clicked(1, "a");
        adds->block();
        clicked(2, "b");
        adds->unblock();
    }
    clicked(4, "c");
    EXPECT_EQ(sum, 1);
    EXPECT_THAT(window.seen, ElementsAre("1a", "2b", "4c"));

    const kestu::Signal<void(std::string &)> changed(button, "changes");
    changed.connect([](std::string &text) { text += '1'; }, KESTU_LINK_ONCE);
    changed.connect([](std::string &text) { text += '2'; });
    std::string text;
    changed(text);
    changed(text);
    EXPECT_EQ(text, "122");

    changed.connect([](std::string &) { kestu::fail(5, "slot"); }, KESTU_LINK_FIRST);
    EXPECT_EQ(changed.emit(std::nothrow, text).error().code(), 5);
    EXPECT_EQ(text, "122");
}

TEST_F(CppSignal, SlotsMayEndWhatCallsThem) {
    UniqueObject source("source"), other("other");
    const kestu::Signal<void()> signal(source, "ends");
    const auto calls = std::make_shared<int>();
    Connection self;
    self = signal.connect([&, held = Counter(calls)] {
        self.disconnect();
        held();
    });
    signal.connect(other, Counter(calls));
    signal();
    signal();
    EXPECT_EQ(*calls, 3);
    EXPECT_FALSE(self.is_connected());
    const Object child = source.add_child("child");
    signal.connect(child, [child, held = Counter(calls)] {
        child.destroy();
        held();
    });
    signal();
    EXPECT_EQ(*calls, 5);
    signal.connect([&, held = Counter(calls)] {
        kestu_obj_destroy(source.release());
        held();
    });
    signal();
    EXPECT_EQ(*calls, 6); // the other one is not called any more
}

// Objects, connections and emissions in any order: no slot is called that has ended, and none lives
// longer than what holds it.
TEST_F(CppSignal, SlotsLiveAsLongAsTheirConnections) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        std::mt19937 random(seed);
        {
            kestu::Pool pool;
            std::vector<kestu_obj_t *> objects;
            std::vector<Connection> kept;
            std::vector<std::pair<std::shared_ptr<int>, Connection>> watched;
            const auto any = [&] { return objects[random() % objects.size()]; };
            for (int step = 0; step < 60; ++step) {
                const unsigned what = objects.empty() ? 0 : random() % 8;
                if (what == 0) {
                    objects.push_back(UniqueObject("any", pool).release());
                } else if (what == 1) {
                    const Object parent = any();
                    objects.push_back(parent.add_child(nullptr).get());
                } else if (what < 5) {
                    const kestu::Signal<void()> signal(any(), "lives");
                    const auto calls = std::make_shared<int>();
                    Connection made = signal.connect(any(), Counter(calls));
                    if (random() % 2)
                        watched.emplace_back(calls, std::move(made));
                } else if (what == 5 && !watched.empty()) {
                    auto &[calls, connection] = watched[random() % watched.size()];
                    connection.disconnect();
                    ASSERT_FALSE(connection.is_connected());
                } else if (what == 6) {
                    for (auto &[calls, connection] : watched)
                        *calls = 0;
                    kestu::Signal<void()>(any(), "lives")();
                    for (auto &[calls, connection] : watched)
                        ASSERT_TRUE(*calls <= (connection.is_connected() ? 1 : 0)) << seed;
                } else if (what == 7 && random() % 2) {
                    // With its children, which are not known here.
                    pool.clear();
                    objects.clear();
                    for (auto &[calls, connection] : watched)
                        ASSERT_FALSE(connection.is_connected());
                }
            }
            if (random() % 2)
                watched.clear();
        }
        ASSERT_EQ(Counter::alive, 0) << seed;
    }
}

// The slot and the link; without memory for its tables the library ends the process.
TEST_F(CppSignal, LeavesNothingBehindWithoutMemory) {
    UniqueObject source("source");
    const Object child = source.add_child("child");
    const kestu::Signal<void()> signal(source, "scarce");
    const auto calls = std::make_shared<int>();
    const long before = kestu::test::live_blocks();
    for (size_t n : {1U, 2U}) {
        const kestu::test::AllocFailure failure(n);
        EXPECT_ANY_THROW(signal.connect(child, Counter(calls)));
        EXPECT_TRUE(failure.happened());
    }
    EXPECT_EQ(Counter::alive, 0);
    EXPECT_EQ(kestu::test::live_blocks(), before);
    signal();
    EXPECT_EQ(*calls, 0);
}

} // namespace
