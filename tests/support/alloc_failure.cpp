#include "support/alloc_failure.hpp"

#include <cerrno>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

// The program's own allocator stands before the C library's, or before the sanitizer's, for the
// library under test too. APR takes the blocks of its pools from mmap.
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
thread_local unsigned mode = kestu::test::only_one;
thread_local bool failed = false;
thread_local size_t until_failure = 0;
thread_local long live = 0;

bool fails_now() {
    if (!armed || (failed && !(mode & kestu::test::all_after)))
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

void *mmap(void *address, size_t size, int protection, int flags, int file, off_t offset) {
    if ((flags & MAP_ANONYMOUS) && (mode & kestu::test::pools_too) && fails_now())
        return MAP_FAILED;
    const long result = syscall(SYS_mmap, address, size, protection, flags, file, offset);
    return reinterpret_cast<void *>(result);
}

void *mmap64(void *address, size_t size, int protection, int flags, int file, off_t offset) {
    return mmap(address, size, protection, flags, file, offset);
}
}

namespace kestu::test {

AllocFailure::AllocFailure(size_t failing, unsigned how) {
    until_failure = failing;
    mode = how;
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
