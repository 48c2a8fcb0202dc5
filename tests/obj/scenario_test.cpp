// Objects that make, connect and destroy each other at random.
#include "fuzz/object_model.hpp"
#include "support/test.hpp"

class Scenario : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Seeds, Scenario, testing::Range(1u, 21u));

TEST_P(Scenario, CallsWhatIsConnectedAndEndsEveryPoolOfTheDead) {
    std::mt19937 random(GetParam());
    for (int world = 0; world < 20; ++world) {
        std::vector<uint8_t> bytes(5000);
        for (uint8_t &byte : bytes)
            byte = static_cast<uint8_t>(random());
        kestu::fuzz::Input input(bytes.data(), bytes.size());
        kestu::fuzz::World(input, world % 2).run();
    }
}
