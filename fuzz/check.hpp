// What fuzz targets, and the models that tests share with them, are made of.
#pragma once

#include "kestu_error.h"
#include "kestu_lib.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace kestu::fuzz {

inline void require(bool holds) {
    if (!holds)
        std::abort();
}

inline void start_library() {
    static const bool started = kestu_initialize() == KESTU_INIT_OK;
    require(started);
}

inline bool succeeded(kestu_error_t *err) {
    kestu_error_clear(err);
    return err == nullptr;
}

// Bytes from which values are taken.
class Input {
  public:
    Input(const uint8_t *data, size_t size) : at_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    uint8_t byte() { return take<uint8_t>(); }
    std::string rest() const { return {reinterpret_cast<const char *>(at_), left_}; }

    // Missing bytes are zero.
    template <typename T>
    T take() {
        T value{};
        const size_t size = std::min(sizeof value, left_);
        std::memcpy(&value, at_, size);
        at_ += size;
        left_ -= size;
        return value;
    }

  private:
    const uint8_t *at_;
    size_t left_;
};

// Runs `use` on so many inputs of random bytes.
template <typename Use>
void on_random_inputs(unsigned count, size_t size, Use use) {
    for (unsigned seed = 0; seed < count; ++seed) {
        std::mt19937 random(seed);
        std::string bytes(size, '\0');
        for (char &byte : bytes)
            byte = static_cast<char>(random());
        Input input(reinterpret_cast<const uint8_t *>(bytes.data()), size);
        use(input);
    }
}

// A pool that lives as long as the object.
class ScratchPool {
  public:
    ScratchPool() { apr_pool_create_ex(&pool_, kestu_pool, nullptr, nullptr); }
    ~ScratchPool() { apr_pool_destroy(pool_); }
    ScratchPool(const ScratchPool &) = delete;
    ScratchPool &operator=(const ScratchPool &) = delete;
    operator apr_pool_t *() const { return pool_; }

  private:
    apr_pool_t *pool_ = nullptr;
};

} // namespace kestu::fuzz
