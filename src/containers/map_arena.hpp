// Memory for the nodes and leaves of a map: pieces are cut from ever larger chunks, and what is
// given back is used again for pieces of the same class.
#pragma once

#include "base/kept_errno.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace kestu::map {

// Pieces begin at multiples of `granule`, and take multiples of it.
template <size_t classes, size_t granule>
class Arena {
  public:
    Arena() = default;
    ~Arena() { clear(); }
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    // A piece of a class, all of which have `bytes` bytes; null without memory.
    void *take(size_t number, size_t bytes) {
        if (Free *piece = free_[number]) {
            free_[number] = piece->next;
            return piece;
        }
        if (bytes > static_cast<size_t>(end_ - at_) && !begin_chunk(bytes))
            return nullptr;
        return std::exchange(at_, at_ + bytes);
    }

    void give_back(size_t number, void *piece) {
        auto *free = static_cast<Free *>(piece);
        free->next = free_[number];
        free_[number] = free;
    }

    // Takes all pieces back at once.
    void clear() {
        while (chunks_) {
            Chunk *next = chunks_->next;
            std::free(chunks_);
            chunks_ = next;
        }
        at_ = end_ = nullptr;
        next_size_ = first_size;
        std::fill_n(free_, classes, nullptr);
    }

  private:
    struct Free {
        Free *next;
    };
    struct Chunk {
        Chunk *next;
    };
    static constexpr size_t first_size = 1024;
    static constexpr size_t largest_size = size_t{1} << 18;

    bool begin_chunk(size_t bytes) {
        const KeptErrno kept;
        const size_t size = std::max(next_size_, sizeof(Chunk) + granule + bytes);
        auto *chunk = size > bytes ? static_cast<Chunk *>(std::malloc(size)) : nullptr;
        if (!chunk)
            return false;
        chunk->next = chunks_;
        chunks_ = chunk;
        const auto begin = reinterpret_cast<uintptr_t>(chunk + 1);
        at_ = reinterpret_cast<char *>((begin + granule - 1) / granule * granule);
        end_ = reinterpret_cast<char *>(chunk) + size;
        next_size_ = std::min(2 * next_size_, largest_size);
        return true;
    }

    Free *free_[classes] = {};
    Chunk *chunks_ = nullptr;
    char *at_ = nullptr; // what is left of the latest chunk
    char *end_ = nullptr;
    size_t next_size_ = first_size;
};

} // namespace kestu::map
