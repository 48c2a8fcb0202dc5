// Replaying a recorded machine: the functions through which the library sees the processor are
// defined here once more, and the dynamic linker prefers those of the program.
#pragma once

#include "machines/leaf_table.hpp"

namespace machines {

// While it lives, the library sees `machine`, which must live as long, instead of the real one.
class Replay {
  public:
    explicit Replay(const RecordedMachine &machine);
    ~Replay();
    Replay(const Replay &) = delete;
    Replay &operator=(const Replay &) = delete;
};

} // namespace machines
