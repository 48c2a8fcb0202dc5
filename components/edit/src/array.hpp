// Arrays that grow, of what can be moved as bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace kestu::edit {

// What adds returns false when no memory is left, and has then changed nothing.
template <typename T>
class Array {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    Array() = default;
    ~Array() { std::free(data_); }
    Array(const Array &) = delete;
    Array &operator=(const Array &) = delete;

    [[nodiscard]] bool reserve(size_t count) {
        if (count <= room_)
            return true;
        const size_t wanted = count > 2 * room_ ? count : 2 * room_;
        size_t bytes;
        if (__builtin_mul_overflow(wanted < 16 ? 16 : wanted, sizeof(T), &bytes))
            return false;
        void *grown = std::realloc(static_cast<void *>(data_), bytes);
        if (!grown)
            return false;
        data_ = static_cast<T *>(grown);
        room_ = bytes / sizeof(T);
        return true;
    }

    [[nodiscard]] bool insert(size_t at, const T *from, size_t count) {
        if (count > SIZE_MAX - size_ || !reserve(size_ + count))
            return false;
        if (count > 0) {
            std::memmove(static_cast<void *>(data_ + at + count), data_ + at,
                         (size_ - at) * sizeof(T));
            std::memcpy(static_cast<void *>(data_ + at), from, count * sizeof(T));
        }
        size_ += count;
        return true;
    }
    [[nodiscard]] bool append(const T *from, size_t count) { return insert(size_, from, count); }
    [[nodiscard]] bool push(const T &value) {
        if (!reserve(size_ + 1))
            return false;
        data_[size_++] = value;
        return true;
    }

    // Where there is room.
    void add(const T &value) { data_[size_++] = value; }

    void erase(size_t at, size_t count) {
        if (count == 0)
            return;
        std::memmove(static_cast<void *>(data_ + at), data_ + at + count,
                     (size_ - at - count) * sizeof(T));
        size_ -= count;
    }
    void cut(size_t size) { size_ = size; }
    void clear() { size_ = 0; }

    // As clear, and nothing of it stays in memory.
    void wipe() {
        if (data_)
            explicit_bzero(static_cast<void *>(data_), room_ * sizeof(T));
        size_ = 0;
    }

    void swap(Array &other) {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(room_, other.room_);
    }

    T *data() { return data_; }
    const T *data() const { return data_; }
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    T &operator[](size_t i) { return data_[i]; }
    const T &operator[](size_t i) const { return data_[i]; }
    T &back() { return data_[size_ - 1]; }
    const T &back() const { return data_[size_ - 1]; }
    T *begin() { return data_; }
    T *end() { return data_ + size_; }
    const T *begin() const { return data_; }
    const T *end() const { return data_ + size_; }

  private:
    T *data_ = nullptr;
    size_t size_ = 0;
    size_t room_ = 0;
};

// Of `text` what begins at `at`, at most `count` bytes; what is not there is left out.
inline std::string_view part(std::string_view text, size_t at, size_t count = SIZE_MAX) {
    const size_t begin = at < text.size() ? at : text.size();
    const size_t left = text.size() - begin;
    return {text.data() + begin, count < left ? count : left};
}

// Bytes of text.
class Bytes : public Array<char> {
  public:
    [[nodiscard]] bool append(std::string_view text) {
        return Array<char>::append(text.data(), text.size());
    }
    [[nodiscard]] bool assign(std::string_view text) {
        if (!reserve(text.size()))
            return false;
        clear();
        return append(text);
    }
    std::string_view view() const { return {data(), size()}; }
};

} // namespace kestu::edit
