// Steps on lists, trees and bit arrays, as the input says; its first byte chooses the family.
#include "fuzz/bitarr_model.hpp"
#include "fuzz/list_model.hpp"
#include "fuzz/tree_model.hpp"

using namespace kestu::fuzz;

namespace {

template <typename Model>
void run(Input &input) {
    Model(input).run();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    Input input(data, size);
    constexpr void (*families[])(Input &) = {
        run<DlModel<PoolList>>,   run<DlModel<HeapList>>,   run<CdlModel>,
        run<TreeModel<PoolTree>>, run<TreeModel<HeapTree>>, run<BitModel>};
    families[input.byte() % std::size(families)](input);
    return 0;
}
