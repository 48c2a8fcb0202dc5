#include "support/alloc_failure.hpp"

#include <cerrno>
#include <cstdlib>

// The program's own malloc stands before the C library's, or before the sanitizer's, for the
// library under test too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define REAL(name) __interceptor_##name
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define REAL(name) __interceptor_##name
#endif
#endif
#ifndef REAL
#define REAL(name) __libc_##name
#endif

extern "C" {
void *REAL(malloc)(size_t);
void *REAL(calloc)(size_t, size_t);
void *REAL(realloc)(void *, size_t);
void REAL(free)(void *);
}

namespace {

thread_local bool armed = false;
thread_local bool rest_fails = false;
thread_local bool failed = false;
thread_local size_t until_failure = 0;
thread_local long live = 0;

bool fails_now() {
    if (!armed || (failed && !rest_fails))
        return false;
    if (!failed && --until_failure > 0)
        return false;
    failed = true;
    errno = ENOMEM;
    return true;
}

void *count(void *block) {
    live += block != nullptr;
    return block;
}

} // namespace

extern "C" {

void *malloc(size_t size) {
    return fails_now() ? nullptr : count(REAL(malloc)(size));
}

void *calloc(size_t n, size_t size) {
    return fails_now() ? nullptr : count(REAL(calloc)(n, size));
}

void *realloc(void *block, size_t size) {
    if (fails_now())
        return nullptr;
    void *moved = REAL(realloc)(block, size);
    live += !block && moved;
    return moved;
}

void free(void *block) {
    live -= block != nullptr;
    REAL(free)(block);
}
}

namespace kestu::test {

AllocFailure::AllocFailure(size_t failing, bool all_after) {
    until_failure = failing;
    rest_fails = all_after;
    failed = false;
    armed = true;
}

AllocFailure::~AllocFailure() {
    armed = false;
}

bool AllocFailure::happened() const {
    return failed;
}

long live_blocks() {
    return live;
}

} // namespace kestu::test
