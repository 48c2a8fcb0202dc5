// Running code on a stack that recursion over data would overflow.
#pragma once

#include <gtest/gtest.h>

#include <pthread.h>

namespace kestu::test {

// Runs `body` on a thread with a stack of 256 KiB. Checks must be EXPECT_, not ASSERT_.
template <typename Body>
void run_on_small_stack(Body body) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    const auto call = [](void *body_of_thread) -> void * {
        (*static_cast<Body *>(body_of_thread))();
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, call, &body), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace kestu::test
