// Objects that make, connect and destroy each other, as the input says.
#include "fuzz/object_model.hpp"

using namespace kestu::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    start_library();
    Input input(data, size);
    World(input, input.byte() % 4 == 0).run();
    return 0;
}
