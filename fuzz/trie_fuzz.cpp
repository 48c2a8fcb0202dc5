// Operations on a trie of either kind, as the input says, against a map of the same keys. Each
// operation is a byte that chooses it, a byte with the key's length, and the key.
#include "kestu_lib.h"
#include "kestu_trie.h"

#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using Model = std::map<std::string, void *>;

char values[256];

void require(bool holds) {
    if (!holds)
        std::abort();
}

void compare(uint64_t length, const uint8_t *key, void *value, void *baton) {
    auto &left = *static_cast<Model *>(baton);
    const auto found = left.find({reinterpret_cast<const char *>(key), length});
    require(found != left.end() && found->second == value && key[length] == 0);
    left.erase(found);
}

// Every key is visited once, and nothing else.
void check(const kestu_trie_t *trie, Model left) {
    kestu_trie_walk(trie, compare, &left);
    require(left.empty());
}

void operate(kestu_trie_t *trie, apr_pool_t *pool, const uint8_t *data, size_t size) {
    Model model;
    while (size >= 2) {
        const size_t length = data[1] < size - 2 ? data[1] : size - 2;
        const uint8_t *key = data + 2;
        const std::string text(reinterpret_cast<const char *>(key), length);
        void *value = values + data[0];
        const auto found = model.find(text);
        require(kestu_trie_search(trie, key, length) ==
                (found == model.end() ? nullptr : found->second));
        if (data[0] % 2 == 0) {
            kestu_error_t *err = pool ? kestu_trie_insert(trie, key, length, value, pool)
                                      : kestu_triem_insert(trie, key, length, value);
            require((err != nullptr) == (found != model.end()));
            require(!err || err->code == 120082);
            kestu_error_clear(err);
            model.emplace(text, value);
        } else {
            (pool ? kestu_trie_delete : kestu_triem_delete)(trie, key, length);
            model.erase(text);
        }
        data += 2 + length;
        size -= 2 + length;
    }
    check(trie, model);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    [[maybe_unused]] static const int started = kestu_initialize();
    kestu_trie_t *trie = nullptr;
    kestu_error_clear(kestu_triem_create(&trie));
    operate(trie, nullptr, data, size);
    kestu_triem_destroy(&trie);
    apr_pool_t *pool = nullptr;
    apr_pool_create_ex(&pool, kestu_pool, nullptr, nullptr);
    kestu_trie_create(&trie, pool);
    operate(trie, pool, data, size);
    apr_pool_destroy(pool);
    return 0;
}
