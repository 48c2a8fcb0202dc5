// Objects that make, connect and destroy each other at random.
#include "fuzz/object_model.hpp"
#include "support/test.hpp"

using namespace kestu::fuzz;

TEST(Scenario, CallsWhatIsConnectedAndEndsEveryPoolOfTheDead) {
    for (const bool quiet : {false, true})
        on_random_inputs(200, 5000, [=](Input &input) { World(input, quiet).run(); });
}
