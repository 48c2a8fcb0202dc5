// Exceptions on their way through the functions of C that call back.
#include "kestu.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace {

using Act = std::function<void()>; // called by every callback

struct Walk {
    const char *name;
    void (*run)(const Act &act);
    int calls; // when nothing is thrown; -1 when that is not known
};

int values[] = {3, 1, 2};

template <typename Map>
void walk_map(const Act &act) {
    Map map;
    for (const char *key : {"a", "ab", "b"})
        map.insert(key, values[0]);
    map.each([&](std::string_view, int &) { act(); });
}

void sort_list(const Act &act) {
    kestu::List<int> list;
    for (int &value : values)
        list.push_back(value);
    const auto less = [&](int a, int b) {
        act();
        return a < b;
    };
    struct Whole { // whatever is thrown, the list stays whole
        kestu::List<int> &list;
        ~Whole() {
            EXPECT_EQ(std::distance(list.begin(), list.end()), 3);
            EXPECT_EQ(&list.back(), &*std::prev(list.end()));
        }
    } whole{list};
    list.sort(less);
}

void walk_files(const Act &act) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("kestu_cpp_" + std::to_string(kestu_getpid()));
    std::filesystem::create_directories(folder / "below");
    for (const char *name : {"a.x", "b.x", "c.y", "below/d.x"})
        std::fclose(std::fopen((folder / name).c_str(), "w"));
    struct Removed {
        std::filesystem::path folder;
        ~Removed() { std::filesystem::remove_all(folder); }
    } removed{folder};
    kestu::each_file(folder.string(), {.include = "*.x"}, [&](std::string_view) { act(); });
    EXPECT_EQ(kestu::Files(folder.string(), "*.y").size(), 1);
}

void emit(const Act &act) {
    kestu::UniqueObject object("emitter");
    const kestu::Signal<void()> signal(object, "thrown through");
    for (int i = 0; i < 3; ++i)
        signal.connect([&] { act(); });
    signal();
}

const Walk walks[] = {
    {"map", walk_map<kestu::Map<int>>, 3},
    {"trie", walk_map<kestu::Trie<int>>, 3},
    {"sort", sort_list, -1},
    {"files", walk_files, 3},
    {"lines", [](const Act &act) { kestu::Error(1, "x").each_line([&](const char *) { act(); }); },
     1},
    {"draw", [](const Act &act) { kestu::draw_circle(0, 0, 1, [&](int, int, double) { act(); }); },
     -1},
    {"emission", emit, 3},
};

TEST(Callback, WhatIsThrownComesOutAndNothingIsCalledAfterIt) {
    const kestu::ObjectEngine engine;
    for (const Walk &walk : walks) {
        SCOPED_TRACE(walk.name);
        int calls = 0;
        walk.run([&] { ++calls; });
        EXPECT_TRUE(walk.calls < 0 || calls == walk.calls) << calls;
        for (int at = 1, all = calls; at <= all; ++at) {
            calls = 0;
            const auto act = [&] {
                if (++calls == at)
                    throw at;
            };
            EXPECT_THROW(walk.run(act), int);
            EXPECT_EQ(calls, at);
            calls = 0;
            const auto fail = [&] {
                if (++calls == at)
                    kestu::fail(at, "from a callback");
            };
            EXPECT_THROW(walk.run(fail), kestu::Error);
        }
    }
}

TEST(Callback, WalksEndWhenTheirCallableSaysSo) {
    kestu::Map<int> map;
    for (const char *key : {"a", "ab", "b"})
        map.insert(key, values[0]);
    int calls = 0;
    EXPECT_TRUE(map.each([&](std::string_view key, int &) { return ++calls, key == "ab"; }));
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(map.each("a", [&](std::string_view, int &) { ++calls; }));
    EXPECT_EQ(calls, 4);
}

} // namespace
