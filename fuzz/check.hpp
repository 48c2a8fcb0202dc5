// What fuzz targets, and the models that tests share with them, are made of.
#pragma once

#include "kestu_error.h"
#include "kestu_lib.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
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

} // namespace kestu::fuzz
