// Operations on a trie of either kind, as the input says.
#include "fuzz/trie_model.hpp"

using namespace kestu::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    Input for_pool(data, size), for_heap(data, size);
    run_trie_model<PoolTrie>(for_pool);
    run_trie_model<HeapTrie>(for_heap);
    return 0;
}
