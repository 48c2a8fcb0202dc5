// Keys and the maps that people take for them, filled, asked for keys that are there and that are
// not, and emptied, in random order.
#pragma once

#include "in_child.hpp"

#include <Judy.h>
#include <benchmark/benchmark.h>
#include <boost/unordered_map.hpp>
#include <malloc.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sys/mman.h>

namespace {

// All sets of keys are made once, before the first child, and nothing that was taken on the way is
// given back to malloc in pieces, so that every child finds its heap without holes.
struct Keys {
    std::string name;
    std::vector<std::string> present = {}, absent = {};
    std::vector<std::string> sought = {}; // those that are present, in another order
};

std::string random_word(std::mt19937_64 &random, size_t length) {
    // Letters about as often as in English words.
    static constexpr std::string_view letters = "eeeeeeaaaaiiiooooutttnnnssshhrrrddlllcummwfgypbvk";
    std::string word;
    while (word.size() < length)
        word += letters[random() % letters.size()];
    return word;
}

// Takes keys from `make` until `count` different ones are present and as many others absent. Keys
// are known to differ by their hashes; the few that share a bit with another are left out.
template <typename Make>
Keys distinct(const char *name, size_t count, Make make) {
    std::vector<bool> seen(size_t{1} << 29);
    const auto take = [&] {
        std::vector<std::string> keys;
        for (keys.reserve(count); keys.size() < count;) {
            std::string key = make();
            auto is_seen = seen[std::hash<std::string>()(key) % seen.size()];
            if (!is_seen)
                keys.push_back(std::move(key));
            is_seen = true;
        }
        return keys;
    };
    Keys keys = {name, take(), take()};
    keys.sought = keys.present;
    std::shuffle(keys.sought.begin(), keys.sought.end(), std::mt19937_64(3));
    return keys;
}

Keys words() {
    return distinct("words", 100000, [random = std::mt19937_64(1)]() mutable {
        return random_word(random, 3 + random() % 4 + random() % 7);
    });
}

Keys numbers() {
    return distinct("8 bytes", 1000000, [random = std::mt19937_64(1)]() mutable {
        const uint64_t number = random();
        return std::string(reinterpret_cast<const char *>(&number), sizeof number);
    });
}

// Paths of files in folders three deep. The fewer folders, the more keys share a long beginning.
Keys paths(const char *name, size_t folder_count) {
    std::mt19937_64 random(1);
    std::vector<std::string> folders;
    while (folders.size() < folder_count)
        folders.push_back("/srv/data/projects/" + random_word(random, 8) + "/" +
                          random_word(random, 6) + "/" + random_word(random, 10) + "/");
    return distinct(name, 200000, [&, random]() mutable {
        return folders[random() % folders.size()] + "measurement-" + random_word(random, 9) +
               ".tif";
    });
}

void *value_of(const std::string &key) {
    return const_cast<char *>(key.data());
}

// The maps under one interface. `find` returns what was stored, or null.
template <typename Map>
struct Standard {
    Map map;
    void insert(const std::string &key) { map.emplace(key, value_of(key)); }
    void *find(const std::string &key) {
        const auto found = map.find(key);
        return found == map.end() ? nullptr : found->second;
    }
    void erase(const std::string &key) { map.erase(key); }
};
using Ordered = Standard<std::map<std::string, void *>>;
using Hashed = Standard<std::unordered_map<std::string, void *>>;
using Boost = Standard<boost::unordered_map<std::string, void *>>;

struct JudyHash {
    Pvoid_t judy = nullptr;
    ~JudyHash() { JudyHSFreeArray(&judy, PJE0); }
    void insert(const std::string &key) {
        *JudyHSIns(&judy, const_cast<char *>(key.data()), key.size(), PJE0) = value_of(key);
    }
    void *find(const std::string &key) {
        const auto *value = JudyHSGet(judy, const_cast<char *>(key.data()), key.size());
        return value ? *value : nullptr;
    }
    void erase(const std::string &key) {
        JudyHSDel(&judy, const_cast<char *>(key.data()), key.size(), PJE0);
    }
};

// Ordered, for keys without zero bytes.
struct JudyText {
    Pvoid_t judy = nullptr;
    static const uint8_t *text(const std::string &key) {
        return reinterpret_cast<const uint8_t *>(key.c_str());
    }
    ~JudyText() { JudySLFreeArray(&judy, PJE0); }
    void insert(const std::string &key) { *JudySLIns(&judy, text(key), PJE0) = value_of(key); }
    void *find(const std::string &key) {
        const auto *value = JudySLGet(judy, text(key), PJE0);
        return value ? *value : nullptr;
    }
    void erase(const std::string &key) { JudySLDel(&judy, text(key), PJE0); }
};

// A full map. It stays until its child ends, which costs no time.
template <typename Map>
Map &filled(const Keys &keys) {
    auto *map = new Map;
    for (const auto &key : keys.present)
        map->insert(key);
    return *map;
}

size_t bytes_in_use() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Also counts what the map takes from malloc; a pool's blocks come from elsewhere, and count
// nothing.
template <typename Map>
void insertion(benchmark::State &state, const Keys &keys) {
    static auto *const bytes = static_cast<size_t *>(mmap( // which the children share
        nullptr, sizeof(size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    measure_in_child(state, [&] {
        const size_t before = bytes_in_use();
        const double seconds = seconds_for([&] { filled<Map>(keys); });
        *bytes = bytes_in_use() - before;
        return seconds;
    });
    if (*bytes > 0)
        state.counters["bytes/key"] =
            static_cast<double>(*bytes) / static_cast<double>(keys.present.size());
}

template <typename Map>
void deletion(benchmark::State &state, const Keys &keys) {
    measure_in_child(state, [&] {
        Map &map = filled<Map>(keys);
        return seconds_for([&] {
            for (const auto &key : keys.sought)
                map.erase(key);
        });
    });
}

template <typename Map>
void lookup(benchmark::State &state, const Keys &keys, const std::vector<std::string> &sought) {
    measure_in_child(state, [&] {
        Map &map = filled<Map>(keys);
        return seconds_for([&] {
            for (const auto &key : sought)
                benchmark::DoNotOptimize(map.find(key));
        });
    });
}

// The cases of one map, named by the family that they belong to.
template <typename Map>
void cases(const char *family, const Keys &keys, const std::string &beside,
           const std::string &who) {
    const auto add = [&](const char *name, auto run) {
        const std::string full =
            std::string(family) + " " + name + ", " + keys.name + beside + "/" + who;
        benchmark::RegisterBenchmark(full.c_str(), run)->Apply(in_children)->Iterations(1);
    };
    add("insertion", [&keys](benchmark::State &state) { insertion<Map>(state, keys); });
    add("hit", [&keys](benchmark::State &state) { lookup<Map>(state, keys, keys.sought); });
    add("miss", [&keys](benchmark::State &state) { lookup<Map>(state, keys, keys.absent); });
    add("deletion", [&keys](benchmark::State &state) { deletion<Map>(state, keys); });
}

} // namespace
