// Matrices whose indices begin where one likes, and arrays of N dimensions.
//
//     kestu::Matrix<double> m(1, 3, 1, 4);         // rows 1 to 3, columns 1 to 4, all 0
//     m(3, 4) = 7;
//     for (double value : m.row(3))
//         assert(value == 0 || value == 7);
//     kestu::Array<int, 3> cube({2, 3, 4});
//     cube.at(1, 2, 3) = 5;                        // throws when it is outside
//     assert(cube.row(1, 2)[3] == 5);
#pragma once

#include "../kestu_array.h"
#include "../kestu_mem.h"
#include "error.hpp"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <span>

namespace kestu {
inline namespace KESTU_CPP {

// A matrix of elements of a plain type, whose indices begin where one likes.
template <typename T>
class Matrix {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    Matrix() noexcept = default;

    // Elements that are all 0, in rows and columns of these numbers, both ends included.
    Matrix(int first_row, int last_row, int first_column, int last_column)
        : Matrix(Bounds{first_row, last_row, first_column, last_column}) {
        detail::check(allocate());
    }

    // Elements that are all 0, in rows and columns that begin with 0.
    Matrix(int rows, int columns) : Matrix(0, rows - 1, 0, columns - 1) {}

    // As the constructor, but returns the error.
    static Expected<Matrix> make(std::nothrow_t, int first_row, int last_row, int first_column,
                                 int last_column) {
        Matrix matrix(Bounds{first_row, last_row, first_column, last_column});
        if (kestu_error_t *err = matrix.allocate())
            return detail::failed(err);
        return matrix;
    }

    Matrix(Matrix &&other) noexcept
        : rows_(std::exchange(other.rows_, nullptr)), bounds_(other.bounds_) {}
    Matrix &operator=(Matrix &&other) noexcept {
        std::swap(rows_, other.rows_);
        std::swap(bounds_, other.bounds_);
        return *this;
    }
    ~Matrix() { free(); }

    // An element, which is not checked to be there.
    T &operator()(int row, int column) const noexcept { return rows_[row][column]; }

    // An element; throws when there is none.
    T &at(int row, int column) const {
        if (!rows_ || row < bounds_.first_row || row > bounds_.last_row ||
            column < bounds_.first_column || column > bounds_.last_column) [[unlikely]]
            fail(0, "A position outside of the matrix.");
        return rows_[row][column];
    }

    // The elements of a row, of which the first is that of the first column.
    std::span<T> row(int row) const noexcept {
        return {rows_[row] + bounds_.first_column, static_cast<size_t>(columns())};
    }

    // The number of the first row.
    int first_row() const noexcept { return bounds_.first_row; }

    // The number of the last row.
    int last_row() const noexcept { return bounds_.last_row; }

    // The number of the first column.
    int first_column() const noexcept { return bounds_.first_column; }

    // The number of the last column.
    int last_column() const noexcept { return bounds_.last_column; }

    // How many rows there are; 0 when it holds nothing.
    int rows() const noexcept { return rows_ ? bounds_.last_row - bounds_.first_row + 1 : 0; }

    // How many columns there are; 0 when it holds nothing.
    int columns() const noexcept {
        return rows_ ? bounds_.last_column - bounds_.first_column + 1 : 0;
    }

    // As kestu_mem_matrix_alloc gives it.
    T **get() const noexcept { return rows_; }

    // As kestu_mem_matrix_alloc gives it, and the caller's from then on, for kestu_mem_matrix_free.
    [[nodiscard]] T **release() noexcept { return std::exchange(rows_, nullptr); }

  private:
    struct Bounds {
        int first_row = 0, last_row = -1, first_column = 0, last_column = -1;
    };

    explicit Matrix(Bounds bounds) noexcept : bounds_(bounds) {}

    // Row by row, so that a failure leaves nothing behind.
    kestu_error_t *allocate() {
        T **rows = nullptr;
        kestu_error_t *err =
            kestu_mem_vector_alloc(&rows, sizeof *rows, bounds_.first_row, bounds_.last_row);
        rows_ = rows;
        for (int64_t row = bounds_.first_row; !err && row <= bounds_.last_row; ++row)
            err = kestu_mem_vector_alloc(&rows_[row], sizeof **rows_, bounds_.first_column,
                                         bounds_.last_column);
        if (!err)
            return nullptr;
        free();
        return kestu_error_quick_wrap_i(0, nullptr, nullptr, err, "Cannot allocate matrix.");
    }

    void free() {
        kestu_mem_matrix_free(rows_, sizeof(T), bounds_.first_row, bounds_.last_row,
                              bounds_.first_column, bounds_.last_column);
        rows_ = nullptr;
    }

    T **rows_ = nullptr;
    Bounds bounds_;
};

// An array of N dimensions of elements of a plain type.
template <typename T, size_t N>
class Array {
    static_assert(std::is_trivially_copyable_v<T> && N > 0);

  public:
    Array() noexcept = default;

    // Elements that are all 0, `dims` in each dimension, the outermost first.
    explicit Array(const std::array<uint32_t, N> &dims) { detail::check(allocate(dims)); }

    // As the constructor, but returns the error.
    static Expected<Array> make(std::nothrow_t, const std::array<uint32_t, N> &dims) {
        Array array;
        if (kestu_error_t *err = array.allocate(dims))
            return detail::failed(err);
        return array;
    }

    Array(Array &&other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
    Array &operator=(Array &&other) noexcept {
        std::swap(array_, other.array_);
        return *this;
    }
    ~Array() { kestu_mem_array_free(array_); }

    // The element at the positions, one a dimension, which are not checked.
    template <std::convertible_to<uint32_t>... Positions>
    requires(sizeof...(Positions) == N) T &operator()(Positions... positions) const noexcept {
        return reach<T>(positions...);
    }

    // The element at the positions, one a dimension; throws when there is none.
    template <std::convertible_to<uint32_t>... Positions>
    requires(sizeof...(Positions) == N) T &at(Positions... positions) const {
        const uint32_t all[] = {static_cast<uint32_t>(positions)...};
        for (size_t d = 0; d < N; ++d)
            if (all[d] >= dim(d)) [[unlikely]]
                fail_outside(all);
        return reach<T>(positions...);
    }

    // The elements at all positions of the last dimension.
    template <std::convertible_to<uint32_t>... Positions>
    requires(sizeof...(Positions) == N - 1) std::span<T> row(Positions... positions)
    const noexcept {
        return {reach_block(array_->data, static_cast<uint32_t>(positions)...), dim(N - 1)};
    }

    // How many positions dimension `d` has, of which the outermost is 0.
    uint32_t dim(size_t d) const noexcept { return array_ ? array_->dims[d] : 0; }

    // The record, which stays the array's; null when it holds nothing.
    kestu_mem_array_t *get() const noexcept { return array_; }

  private:
    static T *reach_block(void *block) noexcept { return static_cast<T *>(block); }
    template <typename... Rest>
    static T *reach_block(void *block, uint32_t position, Rest... rest) noexcept {
        return reach_block(static_cast<void **>(block)[position], rest...);
    }

    template <typename Element, typename... Positions>
    Element &reach(Positions... positions) const noexcept {
        void *block = array_->data;
        const uint32_t all[] = {static_cast<uint32_t>(positions)...};
        for (size_t d = 0; d + 1 < N; ++d)
            block = static_cast<void **>(block)[all[d]];
        return static_cast<Element *>(block)[all[N - 1]];
    }

    [[noreturn]] void fail_outside(const uint32_t *positions) const {
        T element;
        kestu_error_t *err =
            array_ ? kestu_mem_array_copyfromel(array_, &element, sizeof element, N, positions)
                   : kestu_error_create_i(KESTU_ERROR_ERROR, 0, 0, nullptr, nullptr, nullptr,
                                          "The array has no elements.");
        detail::raise(err);
    }

    // Builds what kestu_mem_array_alloc would, but leaves nothing behind when it fails.
    kestu_error_t *allocate(const std::array<uint32_t, N> &dims) {
        kestu_error_t *err = check_size(dims);
        kestu_mem_array_t *made = nullptr;
        if (!err)
            err = kestu_mem_calloc(1, sizeof *made, &made);
        if (!err)
            err = kestu_mem_calloc(N, sizeof *made->dims, &made->dims);
        if (!err) {
            std::copy(dims.begin(), dims.end(), made->dims);
            made->ndims = N;
            made->elsize = sizeof(T);
            err = build<0>(&made->data, dims);
        }
        if (!err) {
            array_ = made;
            return nullptr;
        }
        if (made) {
            release<0>(made->data, dims);
            kestu_mem_free(made->dims);
            kestu_mem_free(made);
        }
        return kestu_error_quick_wrap_i(0, nullptr, nullptr, err, "Cannot allocate array.");
    }

    static kestu_error_t *check_size(const std::array<uint32_t, N> &dims) noexcept {
        size_t bytes = sizeof(T);
        for (uint32_t count : dims)
            if (__builtin_mul_overflow(bytes, count, &bytes) || bytes > PTRDIFF_MAX)
                return detail::no_memory();
        return nullptr;
    }

    template <size_t depth>
    static kestu_error_t *build(void **slot, const std::array<uint32_t, N> &dims) {
        constexpr bool is_last = depth == N - 1;
        kestu_error_t *err =
            kestu_mem_calloc(dims[depth], is_last ? sizeof(T) : sizeof(void *), slot);
        if constexpr (!is_last)
            for (uint32_t i = 0; !err && i < dims[depth]; ++i)
                err = build<depth + 1>(static_cast<void **>(*slot) + i, dims);
        return err;
    }

    template <size_t depth>
    static void release(void *block, const std::array<uint32_t, N> &dims) noexcept {
        if constexpr (depth < N - 1)
            for (uint32_t i = 0; block && i < dims[depth]; ++i)
                release<depth + 1>(static_cast<void **>(block)[i], dims);
        kestu_mem_free(block);
    }

    kestu_mem_array_t *array_ = nullptr;
};

} // namespace KESTU_CPP
} // namespace kestu
