// The pools of objects: which lies in which, and when one may be destroyed.
//
// A slot or a cleanup may destroy an object in whose pool there lives one that is just being
// destroyed, by this library or by APR. The wider pool then waits. It cannot wait for the narrower
// object alone, since APR does not tell when it has done with a pool: it goes at the end of the
// outermost destruction, or with the next one after it.
#pragma once

#include "obj/object.hpp"

namespace kestu {

// While one exists, this thread is destroying objects, and pools that wait go on waiting.
class Destroying {
  public:
    Destroying() { ++depth_; }
    ~Destroying() { --depth_; }
    Destroying(const Destroying &) = delete;
    Destroying &operator=(const Destroying &) = delete;

    static bool is_outermost() { return depth_ == 1; }

  private:
    [[gnu::tls_model("initial-exec")]] inline static constinit thread_local unsigned depth_ = 0;
};

// Makes an object that is not furnished yet, in a pool of its own within `parent`. On failure `out`
// is left as it was.
[[nodiscard]] apr_status_t make_object(Object **out, apr_pool_t *parent);

// Destroys the pool of a dead object, now or when that is possible.
void release_pool(Object &object);

// Destroys the pools that wait, but for those that APR is still busy in.
void release_waiting_pools();

} // namespace kestu
