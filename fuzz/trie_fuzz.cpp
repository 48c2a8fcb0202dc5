// Operations on a trie of either kind, as the input says.
#include "fuzz/trie_model.hpp"

using namespace kestu::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    run_trie_model<PoolTrie>({data, size});
    run_trie_model<HeapTrie>({data, size});
    return 0;
}
