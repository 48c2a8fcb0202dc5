// SHA-1: filling blocks, and the C edge.
#include "kestu_sum.h"

#include "base/sha1_kernel.hpp"

#include <cstring>

using namespace kestu;

namespace {

constexpr size_t length_size = 8;

uint64_t bit_count(const kestu_sha1_t &context) {
    return uint64_t{context.count[1]} << 32 | context.count[0];
}

// How many bytes of the partial block are there.
size_t fill_of(const kestu_sha1_t &context) {
    return context.count[0] / 8 % sha1_block_size;
}

void add_length(kestu_sha1_t &context, uint64_t bytes) {
    const uint64_t bits = bit_count(context) + bytes * 8;
    context.count[0] = static_cast<uint32_t>(bits);
    context.count[1] = static_cast<uint32_t>(bits >> 32);
}

void compress(kestu_sha1_t &context, const unsigned char *blocks, size_t count) {
    sha1_dispatch.current().compress(context.state, blocks, count);
}

template <typename Word>
void store_big_endian(unsigned char *bytes, Word word) {
    for (size_t i = 0; i < sizeof word; ++i)
        bytes[i] = static_cast<unsigned char>(word >> (8 * (sizeof word - 1 - i)));
}

// A one, zeros up to the length at the end of a block, and the length.
void pad(kestu_sha1_t &context) {
    size_t fill = fill_of(context);
    context.buffer[fill++] = 0x80;
    if (fill > sha1_block_size - length_size) {
        std::memset(context.buffer + fill, 0, sha1_block_size - fill);
        compress(context, context.buffer, 1);
        fill = 0;
    }
    std::memset(context.buffer + fill, 0, sha1_block_size - fill);
    store_big_endian(context.buffer + sha1_block_size - length_size, bit_count(context));
    compress(context, context.buffer, 1);
}

} // namespace

void kestu_sha1_init(kestu_sha1_t *context) {
    constexpr uint32_t start[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    std::memcpy(context->state, start, sizeof start);
    context->count[0] = 0;
    context->count[1] = 0;
}

void kestu_sha1_update(const unsigned char *data, uint32_t len, kestu_sha1_t *context) {
    kestu_sha1_update64(data, len, context);
}

void kestu_sha1_update64(const unsigned char *data, uint64_t len, kestu_sha1_t *context) {
    size_t fill = fill_of(*context);
    size_t left = len;
    add_length(*context, len);
    if (fill > 0 && fill + left >= sha1_block_size) {
        const size_t missing = sha1_block_size - fill;
        std::memcpy(context->buffer + fill, data, missing);
        compress(*context, context->buffer, 1);
        data += missing;
        left -= missing;
        fill = 0;
    }
    if (fill == 0 && left >= sha1_block_size) {
        const size_t blocks = left / sha1_block_size;
        compress(*context, data, blocks);
        data += blocks * sha1_block_size;
        left -= blocks * sha1_block_size;
    }
    if (left > 0)
        std::memcpy(context->buffer + fill, data, left);
}

// The context is wiped in a way that the compiler may not leave out: it may hold part of a secret.
void kestu_sha1_final(unsigned char *digest, kestu_sha1_t *context) {
    pad(*context);
    for (size_t i = 0; i < 5; ++i)
        store_big_endian(digest + 4 * i, context->state[i]);
    explicit_bzero(context, sizeof *context);
}

void kestu_sha1_transform(uint32_t *state, const unsigned char *block) {
    sha1_dispatch.current().compress(state, block, 1);
}

// Kept: the zero behind the digest. Relied on by: callers that handle it as a terminated string.
void kestu_sha1(unsigned char *digest, const unsigned char *data, uint32_t len) {
    kestu_sha1_64(digest, data, len);
}

void kestu_sha1_64(unsigned char *digest, const unsigned char *data, uint64_t len) {
    kestu_sha1_t context;
    kestu_sha1_init(&context);
    kestu_sha1_update64(data, len, &context);
    kestu_sha1_final(digest, &context);
    digest[KESTU_SHA1_SIZE] = 0;
}
