// Following links without waiting for each.
#pragma once

#include <cstdint>

namespace kestu {

// Guesses that the next node lies as far from the last as that one from the one before, which holds
// along nodes that were made in a row: a right guess lets the processor go on before the pointer
// has come from memory, so that a long way costs no waiting at each step.
class Stride {
  public:
    // Always `next`.
    template <typename Node>
    Node *step(const void *node, Node *next) {
        const uintptr_t guess = reinterpret_cast<uintptr_t>(node) + distance_;
        uintptr_t error = reinterpret_cast<uintptr_t>(next) - guess;
        asm("" : "+r"(error)); // the compiler, too, must not know that a right guess is `next`
        if (error == 0)
            return reinterpret_cast<Node *>(guess);
        distance_ += error;
        return next;
    }

  private:
    uintptr_t distance_ = 0;
};

} // namespace kestu
